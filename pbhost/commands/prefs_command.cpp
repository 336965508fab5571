#include "pbhost/commands/prefs_command.h"

#include <filesystem>
#include <iostream>

#include "hostkit/services/preferences.h"
#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/places.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

hostkit::Preferences open(const PrefsRequest& request) {
    const fs::path file = preferencesFile(request.file);
    if (file.empty())
        throw Failure(ExitCode::Usage, "no preferences file: HOME is not set; name a file "
                                       "with --prefs");
    return orFail(ExitCode::Usage, "", [&] { return hostkit::Preferences(file); });
}

std::string valueOf(const hostkit::Preferences& preferences, const PrefsRequest& request) {
    const auto value = preferences.get(request.section, request.key);
    if (!value)
        throw Failure(ExitCode::Usage,
                      "prefs: there is no " + request.section + " / " + request.key);
    return *value;
}

} // namespace

std::string listPrefs(const PrefsRequest& request) {
    const hostkit::Preferences preferences = open(request);
    std::string text;
    for (const std::string& section : preferences.sections())
        for (const std::string& key : preferences.keys(section))
            text.append(section + " / " + key + " = " + *preferences.get(section, key) + "\n");
    return text;
}

std::string getPref(const PrefsRequest& request) {
    return valueOf(open(request), request) + "\n";
}

void setPref(const PrefsRequest& request) {
    std::string value = request.value;
    std::error_code error;
    if (request.key == "rootFolder") {
        if (value.empty())
            throw Failure(ExitCode::Usage, "prefs set rootFolder: a folder's path is needed");
        value = fs::absolute(value).string();
        if (!fs::is_directory(value, error))
            std::cerr << "pbhost: note: there is no folder " << value << " yet\n";
    }
    for (const std::string& text : {request.section, request.key, value})
        if (!isUtf8(text))
            throw Failure(ExitCode::Usage, "prefs set: " + text + ": the text is not UTF-8");
    hostkit::Preferences preferences = open(request);
    const fs::path folder = preferencesFile(request.file).parent_path();
    if (!folder.empty())
        fs::create_directories(folder, error); // an error here makes the write below fail
    preferences.set(request.section, request.key, value);
}

void unsetPref(const PrefsRequest& request) {
    hostkit::Preferences preferences = open(request);
    valueOf(preferences, request);
    preferences.erase(request.section, request.key);
}

} // namespace pbhost
