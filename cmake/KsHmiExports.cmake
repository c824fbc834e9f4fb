# The linker's list of what a library may export, made from the list that people read: one demangled name per line.

# Writes a version script to `output`: the functions, types and data named in the file `list`, under the version `node`.
# A name is matched up to its arguments, whose spelling the linker and people do not share.
function(ks_hmi_write_version_script list node output)
  file(STRINGS "${list}" names REGEX "^[^#]")
  set(plain "")
  set(mangled "")
  foreach(name IN LISTS names)
    string(REGEX REPLACE "\\(.*" "(*" pattern "${name}")
    string(REGEX REPLACE "[^A-Za-z0-9_:*]" "?" pattern "${pattern}")
    if(name MATCHES "::")
      list(APPEND mangled "${pattern}")
    else()
      list(APPEND plain "${pattern}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES mangled)
  list(JOIN plain ";\n    " plain)
  list(JOIN mangled ";\n      " mangled)
  file(CONFIGURE OUTPUT "${output}" @ONLY CONTENT "@node@ {
  global:
    @plain@;
    extern \"C++\" {
      @mangled@;
    };
  local:
    *;
};
")
  set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${list}")
endfunction()
