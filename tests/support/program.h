// Random short programs over all natives: bytes choose natives, arguments, collections and failures, and every call is
// compared with the model. The fuzzers and the threads run the same interpreter.
#pragma once

#include <string>
#include <vector>

// What went wrong first, and in which call; empty when nothing did. Bytes run out as zeros.
std::string runProgram(const std::vector<unsigned char>& bytes, bool withFaults);
std::vector<unsigned char> randomBytes(unsigned long seed, std::size_t count);
