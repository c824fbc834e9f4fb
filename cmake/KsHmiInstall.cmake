# What is installed, in three components: ks_hmi_foundation (library, headers, packages for CMake and
# pkg-config), memory_host (the in-memory host) and tool (kshmi, its manual, completions and examples).

include(CMakePackageConfigHelpers)
set(KS_HMI_INCLUDE_DIR "${CMAKE_INSTALL_INCLUDEDIR}/ks_hmi_foundation")
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

function(ks_hmi_install_library)
  install(TARGETS host EXPORT ks_hmi_host)
  install(EXPORT ks_hmi_host NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE host-targets.cmake COMPONENT ks_hmi_foundation)
  install(TARGETS ks_hmi_foundation EXPORT ks_hmi_foundation
    LIBRARY COMPONENT ks_hmi_foundation)
  install(EXPORT ks_hmi_foundation NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE ks_hmi_foundation-targets.cmake COMPONENT ks_hmi_foundation)
  ks_hmi_ship_target(ks_hmi_foundation "$ORIGIN")

  ks_hmi_install_headers(exported_headers.txt ks_hmi_foundation)

  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ks_hmi_foundation-config.cmake.in"
    "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config.cmake" INSTALL_DESTINATION ${KS_HMI_PACKAGE_DIR})
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/ks_hmi_foundation-config-version.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config.cmake"
    "${PROJECT_BINARY_DIR}/ks_hmi_foundation-config-version.cmake"
    DESTINATION ${KS_HMI_PACKAGE_DIR} COMPONENT ks_hmi_foundation)
  ks_hmi_install_pkg_config(ks_hmi_foundation ks_hmi_foundation)
endfunction()

function(ks_hmi_install_memory_host)
  install(TARGETS memory_host EXPORT ks_hmi_memory_host
    LIBRARY COMPONENT memory_host)
  install(EXPORT ks_hmi_memory_host NAMESPACE ks_hmi_foundation:: DESTINATION ${KS_HMI_PACKAGE_DIR}
    FILE memory_host-targets.cmake COMPONENT memory_host)
  ks_hmi_ship_target(memory_host "$ORIGIN")
  ks_hmi_install_headers(memory_host_headers.txt memory_host)
  ks_hmi_install_pkg_config(ks_hmi_memory_host memory_host)
endfunction()

function(ks_hmi_install_tool)
  file(RELATIVE_PATH to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  ks_hmi_ship_target(kshmi "$ORIGIN/${to_libraries}")
  install(TARGETS kshmi COMPONENT tool)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/" DESTINATION "${CMAKE_INSTALL_DATADIR}/ks_hmi_foundation/examples"
    COMPONENT tool FILES_MATCHING PATTERN "*.json")
  if(TARGET kshmi_told)
    set(told "${PROJECT_BINARY_DIR}/kshmi/told")
    install(FILES "${told}/kshmi.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tool)
    install(FILES "${told}/kshmi.bash" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
      RENAME kshmi COMPONENT tool)
    install(FILES "${told}/_kshmi" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" COMPONENT tool)
  endif()
endfunction()

# The installed directories are written relative to the file itself, so that a prefix given to
# `cmake --install` holds.
function(ks_hmi_install_pkg_config name component)
  file(RELATIVE_PATH KS_HMI_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT ${component})
endfunction()

ks_hmi_install_library()
if(TARGET memory_host)
  ks_hmi_install_memory_host()
endif()
if(TARGET kshmi)
  ks_hmi_install_tool()
endif()
