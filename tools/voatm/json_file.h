// A file of JSON that a person wrote and that gives what the command line leaves out.
#ifndef TOOLS_VOATM_JSON_FILE_H
#define TOOLS_VOATM_JSON_FILE_H

#include <string>

#include "options.h"

// Takes the members of the file's object as the options that have them. What is wrong throws
// std::runtime_error with the member, the file and, where it is no JSON, line and column.
void TakeFile(const std::string& path, const OptionList& options);

#endif  // TOOLS_VOATM_JSON_FILE_H
