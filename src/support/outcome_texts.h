// The texts with which the module reports the outcome of a command, shared with pbhost, which
// recognizes them.
#pragma once

#include <array>
#include <string_view>

// Prefix of a message on the Info panel about a program or a frame that has failed.
inline constexpr std::string_view failureMark = "!!!";

// The first line on the Info panel when a file is loaded; the second is the path or the name.
struct LoadTexts {
    const char* fromMemory;
    const char* fromFile;
    const char* cannotOpen;
    const char* cannotRun;
};
inline constexpr LoadTexts graphLoadTexts = {
    "Graph has been loaded from memory",
    "Graph has been loaded from file:", "Graph file could not be opened:", "Graph can not be run:"};
inline constexpr LoadTexts kernelLoadTexts = {
    "Kernel has been loaded from memory", "Kernel has been loaded from file:",
    "Kernel file could not be opened:", "Kernel can not be run:"};
inline constexpr char openGlLacks[] = "OpenGL can not be used, it lacks:";

// The title of an instance: the prefix and the graph's name, or the other text without a graph.
inline constexpr char titlePrefix[] = "TVM:";
inline constexpr char titleWithoutGraph[] = "(Invalid PB)";

// Titles of alerts.
inline constexpr char informationTitle[] = "Pixel Bender Information";
inline constexpr char exportFailedTitle[] = "Log file has failed to export";
inline constexpr char exportedTitle[] = "Log file has exported ";

// The last line on the Info panel if there is nothing to export.
inline constexpr char noErrorLog[] = "No error log";

// The exported log: a line for each heading, followed by its value, then the entries. An entry is a
// name, the tag of a stage, the driver's text and two line feeds.
inline constexpr char errorLogFile[] = "/Tvelmarondine_error_log.txt"; // appended to the folder
inline constexpr std::array<const char*, 4> errorLogHeading = {
    "Win32bit", "vendor : ", "version : ", "glsl : "};
inline constexpr char vertexTag[] = "(v)\n";
inline constexpr char fragmentTag[] = "(f)\n";
inline constexpr char linkTag[] = "(l)\n";
