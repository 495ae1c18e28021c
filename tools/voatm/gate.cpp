// The executable between the library and what it calls. These definitions come before those of the
// shared libraries: the library's calls end here, are noted when somebody observes it, and go on to
// the reader of the platform, and to the system.
#include <dlfcn.h>
#include <sys/sem.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "ask/observation.h"
#include "devhost/reader_line.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

namespace {

// The definition that would have been called without this one.
template <typename Function>
Function* Next(const char* symbol) {
  void* const found = dlsym(RTLD_NEXT, symbol);
  if (found == nullptr) {
    std::fprintf(stderr, "voatm: the platform has no %s\n", symbol);
    std::abort();
  }
  return reinterpret_cast<Function*>(found);
}

// The files that readers have open, by reader.
std::map<const VoCfgUtil*, std::string>& OpenFiles() {
  static std::map<const VoCfgUtil*, std::string> files;
  return files;
}

[[gnu::format(printf, 2, 0)]] void NoteText(int level, const char* format, va_list arguments) {
  Observation* const observation = Observation::Current();
  if (observation == nullptr) return;
  va_list again;
  va_copy(again, arguments);
  std::string text(static_cast<std::size_t>(vsnprintf(nullptr, 0, format, again)), '\0');
  va_end(again);
  vsnprintf(text.data(), text.size() + 1, format, arguments);
  observation->Note({Event::Kind::kTrace, std::move(text), level});
}

}  // namespace

int VoCfgUtil::cfg_open(const char* path) {
  static auto* const next = Next<int(VoCfgUtil*, const char*)>("_ZN9VoCfgUtil8cfg_openEPKc");
  Observation* const observation = Observation::Current();
  if (observation == nullptr) return next(this, path);
  if (observation->Hides(path)) return -1;
  const int result = next(this, path);
  OpenFiles()[this] = path;
  observation->Note({Event::Kind::kOpen, path, 0, result >= 0});
  return result;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int field) {
  static auto* const next =
      Next<int(VoCfgUtil*, const char*, char*, int)>("_ZN9VoCfgUtil10cfg_searchEPKcPci");
  Observation* const observation = Observation::Current();
  if (observation == nullptr) return next(this, key, out, field);
  if (observation->Hides(OpenFiles()[this], key)) return -1;
  const int result = next(this, key, out, field);
  const bool done = result >= 0;
  observation->Note(
      {Event::Kind::kSearch, key, field, done, devhost::LineOf(*this), done ? out : ""});
  return result;
}

void VoDebugUtil::trace(int level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  NoteText(level, format, arguments);
  va_end(arguments);
}

void VoDebugUtil::trace(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  NoteText(Event::kNoLevel, format, arguments);
  va_end(arguments);
}

extern "C" [[gnu::visibility("default")]] int semop(int set, sembuf* operations,
                                                    std::size_t count) noexcept {
  static auto* const next = Next<int(int, sembuf*, std::size_t)>("semop");
  Observation* const observation = Observation::Current();
  if (observation == nullptr) return next(set, operations, count);
  for (std::size_t i = 0; i < count; ++i) {
    const Event::Kind kind = operations[i].sem_op < 0 ? Event::Kind::kTake : Event::Kind::kGive;
    observation->Note({kind, "", operations[i].sem_num});
  }
  return 0;
}
