# Header-only libraries from Debian's packages. They lie among the machine's own headers, which are not the target's.

# add_host_headers(TARGET FOLDER...): lets the target include <FOLDER/...>, by links in a folder that holds nothing else.
function(add_host_headers target)
  set(include ${CMAKE_CURRENT_BINARY_DIR}/include)
  file(MAKE_DIRECTORY ${include})
  foreach(folder IN LISTS ARGN)
    if(NOT EXISTS /usr/include/${folder})
      message(FATAL_ERROR "/usr/include/${folder} is missing; script/setup installs it")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${include}/${folder} SYMBOLIC)
  endforeach()
  target_include_directories(${target} SYSTEM PUBLIC ${include})
endfunction()
