// What a host throws: a message for the user that says what is wrong and where.
#ifndef ORB_HOSTS_ERROR_H
#define ORB_HOSTS_ERROR_H

#include <stdexcept>
#include <string>

namespace orbhost {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs what concerns one file; an Error then names it.
template <class Body>
auto withFile(const std::string& path, Body body) {
  try {
    return body();
  } catch (const Error& error) {
    throw Error(path + ": " + error.what());
  }
}

}  // namespace orbhost

#endif
