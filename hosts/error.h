// What a host throws: a message for the user that says what is wrong and where.
#ifndef ORB_HOSTS_ERROR_H
#define ORB_HOSTS_ERROR_H

#include <stdexcept>

namespace orbhost {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace orbhost

#endif
