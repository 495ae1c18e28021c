// What the fuzzer calls.
#include "support.h"

#include <map>

namespace {

std::map<std::string, FuzzTarget>& Targets() {
  static std::map<std::string, FuzzTarget> targets;
  return targets;
}

FuzzTarget chosen = nullptr;

}  // namespace

bool AddTarget(const char* name, FuzzTarget target) {
  return Targets().emplace(name, target).second;
}

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size);

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** arguments) {
  const std::string name = std::filesystem::path(**arguments).filename();
  const auto target = Targets().find(name);
  Require(target != Targets().end(), "the program is called by the name of a target");
  chosen = target->second;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  return chosen(bytes, size);
}
