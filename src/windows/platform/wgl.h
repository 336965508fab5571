// Includes the system's declarations of WGL.
#pragma once

#include "platform/win32.h"
