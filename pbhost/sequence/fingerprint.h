// What a frame or a video was made from, kept in a small file for each in the folder .pbhost beside
// them. A frame is complete if its recipe is the same and the file is as it was written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace pbhost {

using Recipe = nlohmann::ordered_json;

// What all frames of a command have in common.
struct CommonRecipe {
    std::vector<std::string> effects; // hashes of the kernels and graphs
    std::string module;               // hash of the module
    std::string driver;
    std::string options; // of reading and writing
};

// The recipe of a frame. `inputs` are the files of its pictures; their sizes and times of change
// count.
Recipe recipeOf(const CommonRecipe& common, const std::string& values,
                const std::vector<std::string>& inputs);

// The recipe of a video with those frames. `options` are those of the video itself.
Recipe recipeOfVideo(const std::vector<Recipe>& frames, const std::string& options);

// A hash of the file's content; empty if it cannot be read.
std::string hashOfFile(const std::filesystem::path& file);

// Stores that the file, which is complete, was made by the recipe. Throws Failure (RenderFailed).
void storeRecipe(const std::filesystem::path& output, const Recipe& recipe);

// Whether the file is whole and was made by the recipe; otherwise `reason` says why not.
bool isMadeBy(const std::filesystem::path& output, const Recipe& recipe, std::string& reason);

// Whether the file is whole and was made at that time or later, in seconds since 1970.
bool wasMadeSince(const std::filesystem::path& output, std::int64_t seconds);

} // namespace pbhost
