# Compiles C# with mcs.

find_program(MCS mcs REQUIRED)

# add_managed(NAME OUTPUT folder SOURCES file... [REFERENCES name...])
# Builds the assembly NAME into a folder. A reference is the NAME of another add_managed.
function(add_managed name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT" "SOURCES;REFERENCES")
  set(file ${arg_OUTPUT}/${name}.dll)
  # Sources that configure made have full paths already.
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]")
  set(references)
  foreach(reference IN LISTS arg_REFERENCES)
    get_target_property(path ${reference} MANAGED_FILE)
    list(APPEND references ${path})
  endforeach()
  list(TRANSFORM references PREPEND -r: OUTPUT_VARIABLE reference_options)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${arg_OUTPUT}
    COMMAND ${MCS} -nologo -target:library -platform:x86 -unsafe -optimize -langversion:6 -warn:4 -warnaserror
            -out:${file} ${reference_options} ${arg_SOURCES}
    DEPENDS ${arg_SOURCES} ${references}
    COMMENT "Compiling ${name}.dll"
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${file})
  set_target_properties(${name} PROPERTIES MANAGED_FILE ${file})
  if(arg_REFERENCES)
    add_dependencies(${name} ${arg_REFERENCES})
  endif()
endfunction()
