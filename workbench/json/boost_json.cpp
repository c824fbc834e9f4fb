// The JSON parser's out-of-line parts, compiled once.
#include <boost/json/src.hpp>
