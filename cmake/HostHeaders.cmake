# Header-only libraries from Debian's packages. /usr/include itself must not be searched, because its other headers are for
# the build machine and not for Windows.

# orvellogin_add_host_headers(TARGET FOLDER...): lets the target include <FOLDER/...>, through links in a folder with nothing else.
function(orvellogin_add_host_headers target)
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
