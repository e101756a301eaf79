#include <cstdlib>

#include "core/language.h"

namespace brindle {

int16_t DefaultLanguageBase() {
  return LanguageBaseFromEnvironment([](const char* name) { return std::getenv(name); });
}

}  // namespace brindle
