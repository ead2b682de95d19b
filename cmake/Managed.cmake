# Compiles C#.

find_program(ORVELLOGIN_CSHARP_COMPILER NAMES mcs csc REQUIRED)

# orvellogin_add_managed(TARGET OUTPUT folder SOURCES file... [NAME name] [REFERENCES target...] [DEFINES symbol...])
# Builds an assembly into a folder. It has the name of the target unless NAME is given. REFERENCES are targets of other
# assemblies.
function(orvellogin_add_managed target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT;NAME" "SOURCES;REFERENCES;DEFINES")
  if(NOT arg_NAME)
    set(arg_NAME ${target})
  endif()
  set(file ${arg_OUTPUT}/${arg_NAME}.dll)
  # Generated sources already have full paths.
  set(sources)
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    list(APPEND sources ${source})
  endforeach()
  set(references)
  set(reference_options)
  foreach(reference IN LISTS arg_REFERENCES)
    get_target_property(path ${reference} MANAGED_FILE)
    list(APPEND references ${path})
    # Relative, because a "," in a folder's name would end the option.
    cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    list(APPEND reference_options -r:${path})
  endforeach()
  list(TRANSFORM arg_DEFINES PREPEND -define:)
  # In another project, nothing is built without need, and its compiler may know other warnings.
  set(all)
  set(strict)
  if(PROJECT_IS_TOP_LEVEL)
    set(all ALL)
    set(strict -warnaserror)
  endif()
  # The script is not part of the package, where assemblies need not be reproducible.
  set(identify ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/deterministic-assembly.py)
  set(identity)
  if(EXISTS ${identify})
    set(identity COMMAND python3 ${identify} ${file})
    list(APPEND references ${identify})
  endif()
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${arg_OUTPUT}
    COMMAND ${ORVELLOGIN_CSHARP_COMPILER} -nologo -target:library -unsafe -optimize -langversion:6 -warn:4
            ${strict} -out:${file} ${reference_options} ${arg_DEFINES} ${sources}
    ${identity}
    DEPENDS ${sources} ${references}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    COMMENT "Compiling ${arg_NAME}.dll"
    VERBATIM)
  add_custom_target(${target} ${all} DEPENDS ${file})
  set_target_properties(${target} PROPERTIES MANAGED_FILE ${file})
  if(arg_REFERENCES)
    add_dependencies(${target} ${arg_REFERENCES})
  endif()
endfunction()
