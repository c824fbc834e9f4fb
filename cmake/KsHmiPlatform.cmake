# Which platform the library is linked with: what implements host/.

set(KS_HMI_PLATFORM_TARGET memory_host CACHE STRING
  "Target that implements host/; memory_host is the project's own, NONE leaves it to the process that loads the library")
set(KS_HMI_PLATFORM_PACKAGE "" CACHE STRING
  "Package that brings KS_HMI_PLATFORM_TARGET, for this build and for the users of what it installs")

# Sets KS_HMI_HAS_MEMORY_HOST and KS_HMI_PLATFORM_LIBRARY, which is empty where nothing is linked.
macro(ks_hmi_find_platform)
  set(KS_HMI_HAS_MEMORY_HOST OFF)
  set(KS_HMI_PLATFORM_LIBRARY "${KS_HMI_PLATFORM_TARGET}")
  if(KS_HMI_PLATFORM_TARGET STREQUAL "memory_host")
    set(KS_HMI_HAS_MEMORY_HOST ON)
  elseif(KS_HMI_PLATFORM_TARGET STREQUAL "NONE")
    set(KS_HMI_PLATFORM_LIBRARY "")
  else()
    if(KS_HMI_PLATFORM_PACKAGE)
      find_package(${KS_HMI_PLATFORM_PACKAGE} REQUIRED GLOBAL)
    endif()
    ks_hmi_check_platform()
  endif()
endmacro()

function(ks_hmi_check_platform)
  if(NOT TARGET "${KS_HMI_PLATFORM_TARGET}")
    message(FATAL_ERROR "KS_HMI_PLATFORM_TARGET names \"${KS_HMI_PLATFORM_TARGET}\", and there is no such target. "
      "Define it before this project is added, name the package that brings it in KS_HMI_PLATFORM_PACKAGE, or set "
      "KS_HMI_PLATFORM_TARGET to memory_host (the project's own platform) or NONE (the loading process has it).")
  endif()
endfunction()

# Users of the installed library must find the platform again, under the same name.
function(ks_hmi_check_platform_can_be_found)
  if(KS_HMI_PLATFORM_LIBRARY AND NOT KS_HMI_HAS_MEMORY_HOST AND NOT KS_HMI_PLATFORM_PACKAGE)
    message(FATAL_ERROR "The library is linked with \"${KS_HMI_PLATFORM_TARGET}\", and users of the installed package "
      "could not find it. Name the package that brings this target in KS_HMI_PLATFORM_PACKAGE, or install nothing "
      "(KS_HMI_INSTALL=OFF).")
  endif()
endfunction()
