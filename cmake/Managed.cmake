# Compiles C# with mcs.

find_program(MCS mcs REQUIRED)

# add_managed(TARGET OUTPUT folder SOURCES file... [NAME name] [REFERENCES target...] [DEFINES symbol...])
# Builds an assembly, called like the target unless told, into a folder. A reference is the target of another one.
function(add_managed target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT;NAME" "SOURCES;REFERENCES;DEFINES")
  if(NOT arg_NAME)
    set(arg_NAME ${target})
  endif()
  set(file ${arg_OUTPUT}/${arg_NAME}.dll)
  # Sources that configure made have full paths already.
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]")
  set(references)
  foreach(reference IN LISTS arg_REFERENCES)
    get_target_property(path ${reference} MANAGED_FILE)
    list(APPEND references ${path})
  endforeach()
  list(TRANSFORM references PREPEND -r: OUTPUT_VARIABLE reference_options)
  list(TRANSFORM arg_DEFINES PREPEND -define:)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${arg_OUTPUT}
    COMMAND ${MCS} -nologo -target:library -platform:x86 -unsafe -optimize -langversion:6 -warn:4 -warnaserror
            -out:${file} ${reference_options} ${arg_DEFINES} ${arg_SOURCES}
    DEPENDS ${arg_SOURCES} ${references}
    COMMENT "Compiling ${arg_NAME}.dll"
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS ${file})
  set_target_properties(${target} PROPERTIES MANAGED_FILE ${file})
  if(arg_REFERENCES)
    add_dependencies(${target} ${arg_REFERENCES})
  endif()
endfunction()
