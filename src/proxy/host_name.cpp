#include "proxy/host_name.h"

namespace brindle {

std::string HostFullName() {
  static const std::string name = LookUpHostFullName();
  return name;
}

}  // namespace brindle
