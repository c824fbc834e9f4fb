# Gives each package what Debian asks of it beside its own files: who made it under which terms, a change log, and
# compressed manuals. CPack runs it when everything is staged.

function(compress file)
  execute_process(COMMAND gzip -9n "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(GLOB_RECURSE manuals "${CPACK_TEMPORARY_DIRECTORY}/*.[1-9]")
foreach(manual IN LISTS manuals)
  if(manual MATCHES "/man/man[1-9]/")
    compress("${manual}")
  endif()
endforeach()

string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
  set(folder "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share/doc/${package}")
  file(MAKE_DIRECTORY "${folder}")
  file(WRITE "${folder}/copyright" "ks_hmi_foundation, version ${CPACK_PACKAGE_VERSION}

Copyright: the owners of ks_hmi_foundation

The owners have not chosen a licence. This package grants no permission to use, copy, change or pass on what is in it;
ask the owners.
")
  file(WRITE "${folder}/changelog.Debian" "ks-hmi-foundation (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) UNRELEASED; urgency=medium

  * Made from the sources of version ${CPACK_PACKAGE_VERSION}.
    What is new stands in the file changelog beside this one.

 -- ${CPACK_PACKAGE_CONTACT}  ${today}
")
  compress("${folder}/changelog.Debian")
  configure_file("${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md" "${folder}/changelog" COPYONLY)
  compress("${folder}/changelog")
endforeach()
