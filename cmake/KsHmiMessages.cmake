# A catalogue of messages, kept as data that other hosts can install, as a table that C++ includes.

# Writes to `output` one initialiser {"catalogue", "key", "text"} for each message of the JSON file `catalogue`.
function(ks_hmi_write_message_table catalogue output)
  file(READ "${catalogue}" json)
  string(JSON name GET "${json}" catalogue)
  string(JSON count LENGTH "${json}" messages)
  math(EXPR last "${count} - 1")
  set(table "")
  foreach(index RANGE ${last})
    string(JSON key MEMBER "${json}" messages ${index})
    string(JSON text GET "${json}" messages "${key}" text)
    string(APPEND table "Message{\"${name}\", \"${key}\",\n    R\"text(${text})text\"},\n")
  endforeach()
  file(CONFIGURE OUTPUT "${output}" CONTENT "${table}" @ONLY)
  set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${catalogue}")
endfunction()
