# What is installed, in components; what each needs beside itself is said in docs/installing.md, in the packages made
# of them (KsHmiPackages), and checked by the package that CMake finds:
#   ks_hmi_foundation       the library, for those who run it
#   ks_hmi_foundation_dev   its headers, and packages for CMake and pkg-config
#   memory_host             the in-memory host, for those who run it
#   memory_host_dev         its headers and packages
#   tool                    kshmi, its manual, completions and examples
#   python                  the Python module ks_hmi
#   doc                     the documents

include(CMakePackageConfigHelpers)
set(KS_HMI_INCLUDE_DIR "${CMAKE_INSTALL_INCLUDEDIR}/ks_hmi_foundation")
set(KS_HMI_EXAMPLES_DIR "${CMAKE_INSTALL_DATADIR}/ks_hmi_foundation/examples")
set(KS_HMI_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ks_hmi_foundation")

# The headers that the list in cmake/ names, each in its room.
function(ks_hmi_install_headers list component)
  file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/${list}" headers)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/${list}")
  foreach(header IN LISTS headers)
    get_filename_component(room "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${KS_HMI_INCLUDE_DIR}/${room}"
      COMPONENT ${component})
  endforeach()
endfunction()

# A shared library, its link for development, and its targets file. `export` names the export set.
function(ks_hmi_install_shared target export component)
  install(TARGETS ${target} EXPORT ${export}
    LIBRARY COMPONENT ${component} NAMELINK_COMPONENT ${component}_dev)
  install(EXPORT ${export} NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE ${component}-targets.cmake COMPONENT ${component}_dev)
  ks_hmi_ship_target(${target} "$ORIGIN")
endfunction()

function(ks_hmi_install_library)
  ks_hmi_check_platform_can_be_found()
  install(TARGETS ks_hmi_host EXPORT ks_hmi_host)
  install(EXPORT ks_hmi_host NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE host-targets.cmake COMPONENT ks_hmi_foundation_dev)
  ks_hmi_install_shared(ks_hmi_foundation ks_hmi_foundation ks_hmi_foundation)
  ks_hmi_install_headers(exported_headers.txt ks_hmi_foundation_dev)
  # What a host needs besides: the texts of the library's errors.
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/host/messages" DESTINATION "${CMAKE_INSTALL_DATADIR}/ks_hmi_foundation"
    COMPONENT ks_hmi_foundation_dev FILES_MATCHING PATTERN "*.json")

  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ks_hmi_foundation-config.cmake.in"
    "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config.cmake" INSTALL_DESTINATION ${KS_HMI_PACKAGE_DIR}
    PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_BINDIR)
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/ks_hmi_foundation-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config.cmake"
    "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config-version.cmake"
    DESTINATION ${KS_HMI_PACKAGE_DIR} COMPONENT ks_hmi_foundation_dev)
  ks_hmi_install_pkg_config(ks_hmi_foundation ks_hmi_foundation_dev)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/embedding" DESTINATION "${KS_HMI_EXAMPLES_DIR}"
    COMPONENT ks_hmi_foundation_dev)
endfunction()

function(ks_hmi_install_memory_host)
  ks_hmi_install_shared(memory_host ks_hmi_memory_host memory_host)
  ks_hmi_install_headers(memory_host_headers.txt memory_host_dev)
  ks_hmi_install_pkg_config(ks_hmi_memory_host memory_host_dev)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/memory_host" "${PROJECT_SOURCE_DIR}/examples/recording"
    DESTINATION "${KS_HMI_EXAMPLES_DIR}" COMPONENT memory_host_dev)
endfunction()

function(ks_hmi_install_tool)
  file(RELATIVE_PATH to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  ks_hmi_ship_target(kshmi "$ORIGIN/${to_libraries}")
  install(TARGETS kshmi EXPORT ks_hmi_tool COMPONENT tool)
  install(EXPORT ks_hmi_tool NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE tool-targets.cmake COMPONENT tool)
  file(GLOB models "${PROJECT_SOURCE_DIR}/examples/*.json")
  install(FILES ${models} DESTINATION "${KS_HMI_EXAMPLES_DIR}" COMPONENT tool)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/import" DESTINATION "${KS_HMI_EXAMPLES_DIR}" COMPONENT tool)
  if(TARGET kshmi_told)
    set(told "${PROJECT_BINARY_DIR}/kshmi/told")
    install(FILES "${told}/kshmi.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tool)
    install(FILES "${told}/kshmi.bash" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
      RENAME kshmi COMPONENT tool)
    install(FILES "${told}/_kshmi" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" COMPONENT tool)
  endif()
  # The loader's own message does not say which component to install.
  set(libraries "${CMAKE_INSTALL_LIBDIR}")
  install(CODE "
    foreach(library IN ITEMS $<TARGET_SONAME_FILE_NAME:ks_hmi_foundation> $<TARGET_SONAME_FILE_NAME:memory_host>)
      if(CMAKE_INSTALL_COMPONENT STREQUAL \"tool\" AND NOT CPACK_PACKAGE_NAME AND
         NOT EXISTS \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${libraries}/\${library}\")
        message(STATUS \"kshmi needs \${library} in ${libraries}: install the components ks_hmi_foundation and memory_host, too\")
      endif()
    endforeach()" COMPONENT tool)
endfunction()

function(ks_hmi_install_python)
  install(TARGETS ks_hmi_python LIBRARY DESTINATION "${KS_HMI_PYTHON_DIR}/ks_hmi" COMPONENT python)
  install(FILES ${KS_HMI_PYTHON_SOURCES} DESTINATION "${KS_HMI_PYTHON_DIR}/ks_hmi" COMPONENT python)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/python" DESTINATION "${KS_HMI_EXAMPLES_DIR}" COMPONENT python
    FILES_MATCHING PATTERN "*.py")
endfunction()

# The installed directories are written relative to the file itself, so that a prefix given to
# `cmake --install` holds.
function(ks_hmi_install_pkg_config name component)
  file(RELATIVE_PATH KS_HMI_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  set(KS_HMI_PC_REQUIRES "")
  if(KS_HMI_HAS_MEMORY_HOST)
    set(KS_HMI_PC_REQUIRES "ks_hmi_memory_host = ${PROJECT_VERSION}")
  endif()
  set(KS_HMI_SONAME "libks_hmi_foundation.so.${KS_HMI_INTERFACE_VERSION}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT ${component})
endfunction()

ks_hmi_install_library()
if(KS_HMI_HAS_MEMORY_HOST)
  ks_hmi_install_memory_host()
endif()
if(TARGET kshmi)
  ks_hmi_install_tool()
endif()
if(TARGET ks_hmi_python)
  ks_hmi_install_python()
endif()
# Side by side as in the sources, so that their links hold.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json")
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc)
# The same as a site, where tools/site/build has made it; of what Doxygen puts beside its pages, what they use.
install(DIRECTORY "${PROJECT_BINARY_DIR}/html" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc OPTIONAL
  PATTERN "*.js" EXCLUDE)
if(KS_HMI_HAS_MEMORY_HOST)
  include(KsHmiPackages)
endif()
