// Standard input and output carry bytes: no line-end translation anywhere.
#pragma once

namespace brindle {

void SetBinaryStdio();

}  // namespace brindle
