// What is wrong with the configuration files of a home.
#ifndef TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H
#define TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H

#include <string>

#include "show/output.h"

// Reads cfg/ and inf/ of a home as the library would, and tables/ as the development host would.
// {errors, warnings: their numbers, findings: [{path, line, column, severity: "error" or "warning",
// text, rule}] by path, line and column, which are 1 and 1 when the file as a whole is meant,
// files: read, by path}
Json CheckConfiguration(const std::string& home);

#endif  // TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H
