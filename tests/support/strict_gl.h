// Replaces OpenGL's texture functions in every program that links it: storage that is created
// without pixels contains garbage, as OpenGL allows. Counts uploads and the bytes of
// storage (bench/texture_bytes.h).
#pragma once

// Number of texture uploads since the last call.
int takeUploads();
