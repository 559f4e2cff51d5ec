// The tool tests run in the renderer tests' harness: one application, a
// hidden window when there is a display, fresh systems for each test.
#include "../render/renderfixture.cpp"
