#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "binary_stdio.h"

namespace brindle {

void SetBinaryStdio() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace brindle
