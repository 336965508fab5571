// A render process: it loads the effect module and renders, so that a driver that crashes or hangs
// ends only this process.
//
// Forks, so the server must have one thread and must not have loaded the module.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace pbhost::live {

class RenderChild {
public:
    // Starts the process, which runs `work` with its end of a pair of sockets and then exits. It
    // inherits no other open file than the standard ones, and ends when this process ends. Throws
    // Failure (RenderFailed).
    explicit RenderChild(const std::function<void(int socket)>& work);
    // Kills the process.
    ~RenderChild();
    RenderChild(const RenderChild&) = delete;
    RenderChild& operator=(const RenderChild&) = delete;

    // Kills the process if it has not ended, removes its temporary files, and says how it ended:
    // "crashed (Segmentation fault), most likely in the OpenGL driver".
    std::string end();

    pid_t process() const { return process_; }
    int socket() const { return socket_; } // owned by this object

private:
    pid_t process_ = 0; // 0: it was waited for
    int socket_ = -1;
};

} // namespace pbhost::live
