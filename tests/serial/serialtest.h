// Shared by the serial tests: a string heap for the whole program, death
// tests that fork (the program runs no other threads), temporary files that
// are removed when the program ends, and whole-file reads and writes.
#pragma once

#include <gtest/gtest.h>

#include <string>

// A path in the temporary folder, unique to this run of the program.
std::string makeTempPath(char const* name);
std::string readFile(std::string const& path);
void writeFile(std::string const& path, std::string const& text);

