#include "binary_stdio.h"

namespace brindle {

// POSIX streams never translate line ends.
void SetBinaryStdio() {}

}  // namespace brindle
