// The host's preferences: text values by section and key, stored in a JSON file.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace hostkit {

class Preferences {
public:
    using Values = std::map<std::string, std::map<std::string, std::string>>; // by section and key

    // Reads the file if it exists; an empty path stores the preferences in memory only. Throws
    // std::runtime_error, with the file's name, if the file is not a valid preferences file.
    explicit Preferences(std::filesystem::path file);

    std::optional<std::string> get(const std::string& section, const std::string& key) const;
    // Writes the file at once and atomically: if writing fails, the old file is unchanged. Merges
    // changes by other processes, which a lock file excludes during the write. Throws
    // std::runtime_error.
    void set(const std::string& section, const std::string& key, const std::string& value);
    void erase(const std::string& section, const std::string& key);

    std::vector<std::string> sections() const; // in alphabetical order
    std::vector<std::string> keys(const std::string& section) const;

private:
    void change(const std::function<void(Values&)>& work);

    std::filesystem::path file_;
    Values values_;
};

} // namespace hostkit
