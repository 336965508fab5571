// The command `prefs`: shows and changes the host's preferences, which the effect reads.
#pragma once

#include <string>

namespace pbhost {

struct PrefsRequest {
    std::string file; // preferences file; empty: the user's own
    std::string section = "Settings_cs_TVM_Launcher";
    std::string key;
    std::string value;
};

// Each returns the text to print and throws Failure: RenderFailed if the file cannot be written,
// Usage for an unknown key, an invalid value, or preferences that cannot be read.
std::string listPrefs(const PrefsRequest& request); // all sections
std::string getPref(const PrefsRequest& request);
void setPref(const PrefsRequest& request); // a folder is stored as an absolute path
void unsetPref(const PrefsRequest& request);

} // namespace pbhost
