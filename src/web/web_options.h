// The option pages in the browser: the same page models as the options
// window, loaded from the current snapshot for each request, filled from
// the posted form and applied through the one apply path (snapshot
// published, file written atomically, changed tunnels restarted). The
// browser holds the whole working copy, so nothing is kept between requests.
#pragma once

#include <map>
#include <string>

#include "core/settings_store.h"
#include "ui/settings_apply.h"

namespace brindle::web {

using Form = std::map<std::string, std::string>;

// The pages as JSON: tunnels, news and mail headers, signatures, filters,
// the References limit, and where the settings file is (and whether it
// exists yet).
std::string OptionsJson(const Settings& s);

// Applies the form. The answer is JSON: {"applied":true} or the page's
// refusal as language strings, {"applied":false,"title":...,"text":...}.
std::string ApplyOptions(const Form& form, SettingsStore& store, ui::SettingsApplier& applier);

}  // namespace brindle::web
