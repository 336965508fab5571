// What the engine needs of an OpenGL context. A missing entry point is a null pointer that must
// never be called, so whoever is about to build a graph asks here first.
#pragma once

// The name of the first thing that is missing: "an OpenGL context", an entry point or an
// extension; null if everything is there. Needs the device's context current and glewInit run.
const char* missingFeature();
