// The settings the command-line tools work with: those of the program's
// settings file when there is one, the defaults otherwise.
#pragma once

#include <optional>
#include <string>

#include "core/settings.h"
#include "core/status.h"

namespace brindle {

// Reads "OE_Brindle.ini" from dir, or from the program's settings folder
// when no dir is given, over the defaults in s. A missing file leaves the
// defaults; a dir that is not a folder is an error.
Status LoadToolSettings(const std::optional<std::string>& dir, Settings& s);

}  // namespace brindle
