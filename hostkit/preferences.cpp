#include "hostkit/preferences.h"

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace hostkit {

namespace fs = std::filesystem;

namespace {

using Values = std::map<std::string, std::map<std::string, std::string>>;

std::runtime_error failure(const fs::path& file, const std::string& reason) {
    return std::runtime_error(file.string() + ": " + reason);
}

Values readFile(const fs::path& file) {
    std::ifstream stream(file);
    if (!stream)
        throw failure(file, "cannot be opened");
    try {
        return nlohmann::json::parse(stream).get<Values>();
    } catch (const nlohmann::json::exception& error) {
        throw failure(file, std::string("no preferences: ") + error.what());
    }
}

std::string toJson(const fs::path& file, const Values& values) {
    try {
        return nlohmann::json(values).dump(4) + "\n";
    } catch (const nlohmann::json::exception& error) { // a text that is not UTF-8
        throw failure(file, error.what());
    }
}

void writeFile(const fs::path& file, const Values& values) {
    const std::string text = toJson(file, values);
    fs::path fresh = file;
    fresh += ".new";
    std::ofstream stream(fresh, std::ios::binary);
    stream << text;
    stream.close();
    std::error_code error;
    if (stream)
        fs::rename(fresh, file, error);
    if (stream && !error)
        return;
    std::error_code ignored;
    fs::remove(fresh, ignored);
    throw failure(file, "cannot be written" + (error ? ": " + error.message() : ""));
}

} // namespace

Preferences::Preferences(fs::path file) : file_(std::move(file)) {
    std::error_code error;
    if (!file_.empty() && fs::exists(file_, error))
        values_ = readFile(file_);
    if (error)
        throw failure(file_, error.message());
}

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
    Values changed = values_;
    changed[section][key] = value;
    commit(std::move(changed));
}

void Preferences::erase(const std::string& section, const std::string& key) {
    Values changed = values_;
    const auto found = changed.find(section);
    if (found == changed.end() || found->second.erase(key) == 0)
        return;
    if (found->second.empty())
        changed.erase(found);
    commit(std::move(changed));
}

void Preferences::commit(Values changed) {
    if (!file_.empty())
        writeFile(file_, changed);
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
