// imsctl's modes besides the live session, each with its own arguments.
#pragma once

#include <string>

namespace imsctl {

// imsctl decode ...: frames in hex, or whole captures, to imsctl's lines.
int DecodeMain(int argc, char** argv);
// imsctl replay CAPTURE ...: a captured session against a running velard.
int ReplayMain(int argc, char** argv);

// "request,notify" to a FramePrinter mask; *why set when a name is unknown.
unsigned ParseKinds(const std::string& list, std::string* why);

// The text of a file, or of stdin for "-"; false with *why on failure.
bool ReadInput(const std::string& path, std::string* text, std::string* why);

}  // namespace imsctl
