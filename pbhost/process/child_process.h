// Runs the work in a child process, so that a crash of the OpenGL driver can be reported and
// temporary files are removed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace pbhost {

// Runs `work` in a child process and returns its exit code. Throws Failure (Crashed) if the child
// crashes or is not done after `timeoutSeconds` (0: no limit); the message contains `subject` (the
// input file; may be empty). If interrupted, ends the child and returns 128 plus the signal's
// number. In all these cases the child's temporary files are removed from `folders`. The child ends
// when its parent ends.
//
// Must be called before this program starts a thread. Threads that libraries start before main() do
// not exist in the child; it ends without exit handlers, which would wait for them forever.
int runInChild(const std::function<int()>& work, const std::string& subject,
               const std::vector<std::filesystem::path>& folders, double timeoutSeconds = 0);

} // namespace pbhost
