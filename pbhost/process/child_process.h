// The work in a process of its own: what takes an OpenGL driver down with it leaves somebody to
// say so, and to tidy up.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace pbhost {

// Runs the work in a child and gives its exit code. Throws Failure (Crashed) for a child that
// crashes; the message names the subject (the file that is worked on; may be empty). An interrupt
// ends the child and gives 128 and the signal's number. In both cases the child's temporary files
// are removed from the folders. The child ends with its parent.
//
// The program must not have started a thread yet. Those that libraries start before main() are
// missing in the child; it ends without running exit handlers, which would wait for them for ever.
int runInChild(const std::function<int()>& work, const std::string& subject,
               const std::vector<std::filesystem::path>& folders);

} // namespace pbhost
