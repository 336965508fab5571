// The command `prefs`: the host's preferences, which the effect reads.
#pragma once

#include <string>

namespace pbhost {

struct PrefsRequest {
    std::string file; // the preferences; empty: the user's own
    std::string section = "Settings_cs_TVM_Launcher";
    std::string key;
    std::string value;
};

// Each gives what the command prints and throws Failure: RenderFailed for a file that cannot be
// written, Usage for a key that is not there, a value that cannot be kept, and preferences that
// cannot be read.
std::string listPrefs(const PrefsRequest& request); // of all sections
std::string getPref(const PrefsRequest& request);
void setPref(const PrefsRequest& request); // a folder is kept as an absolute path
void unsetPref(const PrefsRequest& request);

} // namespace pbhost
