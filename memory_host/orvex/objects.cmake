# The object system.
target_sources(memory_host PRIVATE
  orvex/class_members.cpp
  orvex/cos_class.cpp
  orvex/cos_defaults.cpp
  orvex/cos_method_call.cpp
  orvex/cos_namespace.cpp
  orvex/cos_properties.cpp
  orvex/objects.cpp
  orvex/script_class.cpp
  orvex/types.cpp)
