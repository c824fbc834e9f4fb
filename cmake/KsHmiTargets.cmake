# What every target of the project shares: warnings, hardening, sanitizers, and how the shipped library is put together.

include(KsHmiExports)

function(ks_hmi_configure_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
                                           -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # This compiler sees overlaps in std::string's own concatenation that are not there.
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  # Instrumented code makes compilers see what is not there; the plain builds hold the warnings.
  if(KS_HMI_WARNINGS_AS_ERRORS AND NOT KS_HMI_SANITIZE)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
  if(KS_HMI_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KS_HMI_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${KS_HMI_SANITIZE})
  else()
    ks_hmi_harden_target(${target})
  endif()
endfunction()

# Not worth optimising where every instruction is checked: it is compiled for longer than it runs. What it calls is.
function(ks_hmi_build_quickly target)
  if(KS_HMI_SANITIZE)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()

# What takes long to compile and is quick to join: from nothing several sources at a time, if so wanted.
function(ks_hmi_join_sources target)
  if(KS_HMI_JOIN_SOURCES)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON)
  endif()
endfunction()

# Sources that name things of their own as their neighbours do stay units of their own where several make one.
function(ks_hmi_keep_apart target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Functions that return into overwritten memory stop, calls are bound before anything runs and their table is closed
# to writing, and the C library checks the sizes it can know. tools/check_hardening reads it off the binaries.
function(ks_hmi_harden_target target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
endfunction()

# What is installed is built as it will be installed, in the same places relative to each other: nothing is patched on
# the way, which would leave padding in the search paths.
function(ks_hmi_ship_target target run_path)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")  # where the loader looks anyway
    set(run_path "")
  endif()
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}"
    INSTALL_RPATH "${run_path}"
    BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# The rooms that make up libks_hmi_foundation.so; each lists its own sources.
function(ks_hmi_add_foundation_library)
  add_library(ks_hmi_foundation SHARED)
  add_library(ks_hmi_foundation::ks_hmi_foundation ALIAS ks_hmi_foundation)
  foreach(room IN ITEMS foundation signals observers streamout bindings)
    add_subdirectory(${room})
  endforeach()
  target_include_directories(ks_hmi_foundation PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ks_hmi_foundation>)
  target_link_libraries(ks_hmi_foundation PUBLIC ks_hmi_host Boost::headers PRIVATE ${KS_HMI_PLATFORM_LIBRARY})
  if(KS_HMI_PLATFORM_LIBRARY AND NOT KS_HMI_SANITIZE)  # the checks' own entry points are found in the program, at run time
    target_link_options(ks_hmi_foundation PRIVATE -Wl,--no-undefined)
  endif()
  set(exports "${PROJECT_BINARY_DIR}/ks_hmi_foundation.map")
  ks_hmi_write_version_script("${PROJECT_SOURCE_DIR}/cmake/exported_symbols.txt"
    KS_HMI_${KS_HMI_INTERFACE_VERSION} "${exports}")
  target_link_options(ks_hmi_foundation PRIVATE "-Wl,--version-script=${exports}")
  set_property(TARGET ks_hmi_foundation APPEND PROPERTY LINK_DEPENDS "${exports}")
  set_target_properties(ks_hmi_foundation PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${KS_HMI_INTERFACE_VERSION})
  ks_hmi_configure_target(ks_hmi_foundation)
endfunction()
