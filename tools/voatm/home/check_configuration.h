// What is wrong with the configuration files of a home.
#ifndef TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H
#define TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H

#include <cstddef>
#include <string>
#include <vector>

#include "home/configuration_kinds.h"

struct ConfigurationFinding {
  std::string path;
  std::size_t line;  // 1 and 1 when the file as a whole is meant
  std::size_t column;
  Severity severity;
  std::string text;
  std::string rule;
};

struct ConfigurationReport {
  std::vector<ConfigurationFinding> findings;  // by path, line and column
  std::vector<std::string> files;              // read, by path
};

// Reads cfg/ and inf/ of a home as the library would, and tables/ as the development host would.
ConfigurationReport CheckConfiguration(const std::string& home);

#endif  // TOOLS_VOATM_HOME_CHECK_CONFIGURATION_H
