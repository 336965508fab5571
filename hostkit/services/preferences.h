// The host's preferences: sections of keys with text values, kept in a JSON file.
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
    using Values = std::map<std::string, std::map<std::string, std::string>>; // section, key

    // Reads the file if there is one; an empty path: in memory only. Throws std::runtime_error,
    // with the file's name, when it is there and cannot be read as preferences.
    explicit Preferences(std::filesystem::path file);

    std::optional<std::string> get(const std::string& section, const std::string& key) const;
    // Written to the file at once, under a name of its own first, so that a failure leaves the old
    // one. What other processes have changed meanwhile is kept; a lock file beside it sees to that.
    // Throws std::runtime_error.
    void set(const std::string& section, const std::string& key, const std::string& value);
    void erase(const std::string& section, const std::string& key);

    std::vector<std::string> sections() const; // in the order of the alphabet
    std::vector<std::string> keys(const std::string& section) const;

private:
    void change(const std::function<void(Values&)>& work);

    std::filesystem::path file_;
    Values values_;
};

} // namespace hostkit
