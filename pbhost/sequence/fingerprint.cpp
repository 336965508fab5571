#include "pbhost/sequence/fingerprint.h"

#include <sys/stat.h>

#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>

#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

fs::path recipeFile(const fs::path& output) {
    return folderOf(output) / ".pbhost" / (output.filename().string() + ".json");
}

// Size and time of the last change; null without a file.
Recipe stateOf(const fs::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return nullptr;
    return {status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::string hex(std::size_t number) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number, 16);
    return {digits, end.ptr};
}

std::string hashOf(const std::string& bytes) {
    return hex(std::hash<std::string>()(bytes)) + "-" + std::to_string(bytes.size());
}

std::string textOf(const Recipe& recipe) {
    return recipe.dump(-1, ' ', false, Recipe::error_handler_t::replace);
}

Recipe storedRecipe(const fs::path& output) {
    std::ifstream stream(recipeFile(output), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    return Recipe::parse(text, nullptr, false);
}

} // namespace

std::string hashOfFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return "";
    const std::string bytes{std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>()};
    return hashOf(bytes);
}

Recipe recipeOf(const CommonRecipe& common, const std::string& values,
                const std::vector<std::string>& inputs) {
    Recipe files = Recipe::array();
    for (const std::string& input : inputs)
        files.push_back({input, stateOf(input)});
    return {{"effects", common.effects}, {"values", hashOf(values)}, {"pictures", files},
            {"options", common.options}, {"module", common.module},  {"driver", common.driver}};
}

Recipe recipeOfVideo(const std::vector<Recipe>& frames, const std::string& options) {
    return {{"options", options}, {"frames", hashOf(textOf(frames))}};
}

void storeRecipe(const fs::path& output, const Recipe& recipe) {
    std::error_code ignored;
    fs::create_directory(recipeFile(output).parent_path(), ignored);
    const Recipe all = {{"file", stateOf(output)}, {"recipe", recipe}};
    writeTextFile(recipeFile(output), textOf(all) + "\n");
}

bool isMadeBy(const fs::path& output, const Recipe& recipe, std::string& reason) {
    if (stateOf(output).is_null()) {
        reason = "it does not exist";
        return false;
    }
    const Recipe stored = storedRecipe(output);
    if (!stored.is_object() || !stored.contains("recipe") || !stored.contains("file")) {
        reason = "it is not known how it was made";
        return false;
    }
    if (stored["file"] != stateOf(output)) {
        reason = "it was changed";
        return false;
    }
    for (const auto& [key, value] : recipe.items())
        if (!stored["recipe"].is_object() || !stored["recipe"].contains(key) ||
            stored["recipe"][key] != value) {
            reason = "other " + key;
            return false;
        }
    return true;
}

bool wasMadeSince(const fs::path& output, std::int64_t seconds) {
    struct stat status {};
    if (::stat(recipeFile(output).c_str(), &status) != 0 || status.st_mtim.tv_sec < seconds)
        return false;
    const Recipe stored = storedRecipe(output);
    return stored.is_object() && stored.contains("file") && stored["file"] == stateOf(output);
}

} // namespace pbhost
