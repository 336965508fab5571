// What a debugger would see of this process while some work runs, as UTF-8.
//
// On Linux the environment variable TVELMARONDINE_DEBUG stands for the debugger.
#pragma once

#include <functional>
#include <string>

std::string debugOutputOf(const std::function<void()>& work);
