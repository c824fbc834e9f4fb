# Debian packages of what is installed, one for each component; made by `./dev package` from a build that is configured
# for /usr (the preset "package").

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ks-hmi-foundation)
set(CPACK_PACKAGE_VENDOR "Kestrel HMI developers")
set(CPACK_PACKAGE_CONTACT "Kestrel HMI developers <kestrel-hmi@example.org>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/finish_packages.cmake")
set(CPACK_COMPONENTS_ALL "")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own

# ks_hmi_package(component package section "synopsis" "extended description" depends...)
# `depends` name components, which are needed in the same version, or packages.
function(ks_hmi_package component package section synopsis text)
  string(TOUPPER "${component}" upper)
  set(depends "")
  foreach(needed IN LISTS ARGN)
    if(DEFINED KS_HMI_PACKAGE_OF_${needed})
      list(APPEND depends "${KS_HMI_PACKAGE_OF_${needed}} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
    else()
      list(APPEND depends "${needed}")
    endif()
  endforeach()
  list(JOIN depends ", " depends)
  set(KS_HMI_PACKAGE_OF_${component} "${package}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${package}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${synopsis}\n${text}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  if(section STREQUAL "libs")
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/triggers" PARENT_SCOPE)
  endif()
endfunction()

set(about "A model's author marks the ports and chart states worth watching.
The library remembers the marks, saves them with the model, and answers
whether a port is observed while a simulation runs.")
ks_hmi_package(memory_host libkestrel-memory-host${KS_HMI_INTERFACE_VERSION} libs
  "in-memory host for signal instrumentation"
  "${about}\n.\nThis package has the platform that the library runs on where the
modelling environment is absent.")
ks_hmi_package(ks_hmi_foundation libks-hmi-foundation${KS_HMI_INTERFACE_VERSION} libs
  "signal instrumentation of Kestrel models"
  "${about}\n.\nThis package has the shared library." memory_host)
ks_hmi_package(ks_hmi_foundation_dev libks-hmi-foundation-dev libdevel
  "signal instrumentation of Kestrel models - development files"
  "${about}\n.\nThis package has the headers, and the files that CMake and pkg-config
look for."
  ks_hmi_foundation libboost1.81-dev)
ks_hmi_package(memory_host_dev libkestrel-memory-host-dev libdevel
  "in-memory host for signal instrumentation - development files"
  "${about}\n.\nThis package has the headers of the in-memory host."
  memory_host ks_hmi_foundation_dev)
if(KS_HMI_BUILD_TOOL)
  ks_hmi_package(tool kshmi utils
    "marks, checks and carries the instrumentation of models"
    "${about}\n.\nThis package has the command-line tool, with its manual, completion for
bash and zsh, and examples." ks_hmi_foundation memory_host)
endif()
if(TARGET ks_hmi_python)
  math(EXPR next_minor "${Python3_VERSION_MINOR} + 1")
  ks_hmi_package(python python3-ks-hmi python
    "signal instrumentation of Kestrel models - Python module"
    "${about}\n.\nThis package has the Python module ks_hmi, with its type stubs."
    ks_hmi_foundation memory_host "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR})"
    "python3 (<< ${Python3_VERSION_MAJOR}.${next_minor})" python3-numpy)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS kshmi)  # whose example models its own examples open
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-pandas)
endif()
ks_hmi_package(doc ks-hmi-foundation-doc doc
  "signal instrumentation of Kestrel models - documentation"
  "${about}\n.\nThis package has the documents, as text and as a site: how to embed the
library, what a model file holds, how to use the tool and the Python
module, and the reference of the headers.")
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")  # where Debian looks up what documents there are
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/doc-base" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc-base"
    RENAME ks-hmi-foundation-doc COMPONENT doc)
endif()

include(CPack)
