// The settings the command-line tools work with: those of the program's
// settings file when there is one, the defaults otherwise.
#pragma once

#include <optional>
#include <string>

#include "core/settings.h"

namespace brindle {

// Reads "OE_Brindle.ini" from dir, or from the program's settings folder
// when no dir is given, over the defaults in s. A missing file leaves the
// defaults; a dir that is not a folder is an error (false, with error set).
bool LoadToolSettings(const std::optional<std::string>& dir, Settings& s, std::string& error);

}  // namespace brindle
