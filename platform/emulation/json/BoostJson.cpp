// The one place where Boost.JSON's definitions are compiled.
#include <boost/json/src.hpp>
