#include "hostkit/services/preferences.h"

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

#include "hostkit/services/complete_file.h"
#include "hostkit/services/file_lock.h"
#include "hostkit/services/json_errors.h"

namespace hostkit {

namespace fs = std::filesystem;

namespace {

using Values = Preferences::Values;

std::runtime_error failure(const fs::path& file, const std::string& reason) {
    return std::runtime_error(file.string() + ": " + reason);
}

Values readFile(const fs::path& file) {
    if (fs::is_directory(file))
        throw failure(file, "it is a folder");
    std::ifstream stream(file);
    if (!stream)
        throw failure(file, "cannot be opened");
    try {
        return nlohmann::json::parse(stream).get<Values>();
    } catch (const nlohmann::json::exception& error) {
        throw failure(file, "not a preferences file: " + plainJsonError(error));
    }
}

std::string toJson(const fs::path& file, const Values& values) {
    try {
        return nlohmann::json(values).dump(4) + "\n";
    } catch (const nlohmann::json::exception& error) { // for example text that is not valid UTF-8
        throw failure(file, plainJsonError(error));
    }
}

void writeValues(const fs::path& file, const Values& values) {
    const std::string text = toJson(file, values);
    fs::path fresh = file;
    fresh += "." + processName() + ".new";
    const bool isWritten = !writeFile(fresh, text);
    const std::error_code error = isWritten ? replaceFile(fresh, file) : std::error_code();
    if (isWritten && !error)
        return;
    std::error_code ignored;
    fs::remove(fresh, ignored);
    throw failure(file, "cannot be written" + (error ? ": " + error.message() : ""));
}

Values readIfThere(const fs::path& file) {
    std::error_code error;
    const bool isThere = !file.empty() && fs::exists(file, error);
    if (error)
        throw failure(file, error.message());
    return isThere ? readFile(file) : Values();
}

} // namespace

Preferences::Preferences(fs::path file) : file_(std::move(file)), values_(readIfThere(file_)) {}

std::optional<std::string> Preferences::get(const std::string& section,
                                            const std::string& key) const {
    const auto found = values_.find(section);
    if (found == values_.end())
        return std::nullopt;
    const auto value = found->second.find(key);
    return value == found->second.end() ? std::nullopt : std::optional(value->second);
}

void Preferences::set(const std::string& section, const std::string& key,
                      const std::string& value) {
    change([&](Values& values) { values[section][key] = value; });
}

void Preferences::erase(const std::string& section, const std::string& key) {
    change([&](Values& values) {
        const auto found = values.find(section);
        if (found != values.end() && found->second.erase(key) != 0 && found->second.empty())
            values.erase(found);
    });
}

// Rereads the file first, because another process may have changed it.
void Preferences::change(const std::function<void(Values&)>& work) {
    if (file_.empty())
        return work(values_);
    // Locked until the file is written.
    const FileLock lock(file_);
    Values changed = readIfThere(file_);
    work(changed);
    writeValues(file_, changed);
    values_ = std::move(changed);
}

std::vector<std::string> Preferences::sections() const {
    std::vector<std::string> names;
    for (const auto& [name, keys] : values_)
        names.push_back(name);
    return names;
}

std::vector<std::string> Preferences::keys(const std::string& section) const {
    std::vector<std::string> names;
    const auto found = values_.find(section);
    if (found != values_.end())
        for (const auto& [name, value] : found->second)
            names.push_back(name);
    return names;
}

} // namespace hostkit
