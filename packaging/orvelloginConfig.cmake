# Defines the targets for the architecture of the project that looks for the package:
#   orvellogin::client      the header-only class, for any compiler
#   orvellogin::c           the plain functions
#   orvellogin::orvellogin  the class that orvellogin.dll exports, for mingw-w64's g++ only
# COMPONENTS are the names after "::".

set(orvellogin_FOUND FALSE)
if(NOT WIN32)
  set(orvellogin_NOT_FOUND_MESSAGE "The Orvel login library is for Windows programs, and this project is configured for \
\"${CMAKE_SYSTEM_NAME}\"; a toolchain file for mingw-w64 is in the package's folder cmake.")
  return()
endif()

set(orvellogin_architecture "")
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(orvellogin_architecture x86)
elseif(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(orvellogin_architecture x64)
else()
  set(orvellogin_NOT_FOUND_MESSAGE
    "The project's architecture is not known yet; enable the language C or CXX before looking for the Orvel login library.")
  return()
endif()
# The machine's own processor says nothing of the program's if the compiler is Microsoft's.
set(orvellogin_processor "${CMAKE_C_COMPILER_ARCHITECTURE_ID} ${CMAKE_CXX_COMPILER_ARCHITECTURE_ID}")
if(NOT MSVC AND CMAKE_CROSSCOMPILING)
  set(orvellogin_processor "${CMAKE_SYSTEM_PROCESSOR}")
endif()
if(orvellogin_processor MATCHES "ARM|arm|aarch")
  set(orvellogin_architecture ARM)
endif()
if(NOT EXISTS ${CMAKE_CURRENT_LIST_DIR}/${orvellogin_architecture}/orvelloginTargets.cmake)
  set(orvellogin_served "")
  foreach(architecture x86 x64)
    if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${architecture}/orvelloginTargets.cmake)
      string(APPEND orvellogin_served " ${architecture}")
    endif()
  endforeach()
  set(orvellogin_NOT_FOUND_MESSAGE "This package of the Orvel login library serves${orvellogin_served}, and this project is \
configured for ${orvellogin_architecture}. Configure it for x86 with -A Win32 (Visual Studio) or an i686 compiler, for x64 \
with -A x64 or an x86_64 compiler.")
  return()
endif()

foreach(component IN LISTS orvellogin_FIND_COMPONENTS)
  set(orvellogin_${component}_FOUND TRUE)
  if(NOT component MATCHES "^(client|c|orvellogin)$")
    set(orvellogin_${component}_FOUND FALSE)
    set(orvellogin_reason
      "The Orvel login library has no component \"${component}\"; its components are client, c and orvellogin.")
  elseif(component STREQUAL "orvellogin" AND NOT MINGW)
    set(orvellogin_${component}_FOUND FALSE)
    set(orvellogin_reason
      "The component \"orvellogin\", the exported class, is for mingw-w64's g++ only; use the component \"client\".")
  endif()
  if(orvellogin_FIND_REQUIRED_${component} AND NOT orvellogin_${component}_FOUND)
    set(orvellogin_NOT_FOUND_MESSAGE "${orvellogin_reason}")
    return()
  endif()
endforeach()

include(${CMAKE_CURRENT_LIST_DIR}/${orvellogin_architecture}/orvelloginTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Deploy.cmake)
if(NOT MINGW)
  # The other form of import library, for Microsoft's linker and lld.
  get_target_property(orvellogin_configurations orvellogin::c IMPORTED_CONFIGURATIONS)
  foreach(configuration IN LISTS orvellogin_configurations)
    set_target_properties(orvellogin::c PROPERTIES
      IMPORTED_IMPLIB_${configuration} "${CMAKE_CURRENT_LIST_DIR}/../../${orvellogin_architecture}/orvelloginc.lib")
  endforeach()
endif()
set(orvellogin_FOUND TRUE)
