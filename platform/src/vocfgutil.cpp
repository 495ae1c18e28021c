#include "vocfgutil.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace {

// What a walk says in place of a character.
constexpr int kFileEnd = -1;
constexpr int kFieldEnd = -2;
constexpr int kBrokenField = -3;

// A carriage return is a blank, so that CRLF needs no care anywhere else.
bool IsBlank(int character) { return character == ' ' || character == '\t' || character == '\r'; }

bool IsLineEnd(int character) { return character == '\n' || character == kFileEnd; }

bool EndsField(int character) { return IsBlank(character) || IsLineEnd(character); }

// Returns what remains of a key inside a group: its item, or null when the key lies elsewhere.
const char* ItemOf(const char* key, const char* group) {
  const std::size_t length = std::strlen(group);
  const bool inside = std::strncmp(key, group, length) == 0 && key[length] == '#';
  return inside ? key + length + 1 : nullptr;
}

}  // namespace

// Walks a file's characters from the first to the last, refilling the reader's buffer on its way,
// so that no line and no field has to lie in the buffer as a whole.
class VoCfgUtil::Cursor {
 public:
  explicit Cursor(VoCfgUtil& reader) : reader_(reader) {
    if (reader_.offset_ != 0 || reader_.failed_) reader_.Load(0);
    EnterBuffer();
  }

  int line() const { return line_; }

  // Goes behind the first field of a key's first entry. Returns that field, or null when the file
  // has no such entry.
  const char* FindEntry(const char* key) {
    const char* name = key;  // of the entry sought here; null in a group that cannot hold it
    std::size_t length = std::strlen(key);
    do {
      const int first = SkipBlanks();
      if (first == '[') {
        char group[kMaxField + 1];
        name = ReadHeader(group) ? ItemOf(key, group) : nullptr;
        length = name != nullptr ? std::strlen(name) : 0;
      } else if (name != nullptr && MayBe(first, name, length) && PassName(name)) {
        return name;
      }
    } while (NextLine());
    return nullptr;
  }

  // Reads one field of the entry behind whose name this stands into value, of kMaxField + 1 bytes.
  // Returns false when there is none or when any field of the entry is unreadable.
  bool ReadEntry(const char* name, long field, char* value) {
    const std::size_t length = std::strlen(name);
    if (length > kMaxField) return false;
    if (field == 1) std::memcpy(value, name, length + 1);
    long number = 1;
    char other[kMaxField + 1];
    while (!IsLineEnd(SkipBlanks())) {
      ++number;
      if (!ReadField(number == field ? value : other)) return false;
    }
    return field >= 1 && field <= number;
  }

  int CountHeaders(const char* name) {
    int count = 0;
    do {
      char group[kMaxField + 1];
      if (SkipBlanks() == '[' && ReadHeader(group) && std::strcmp(group, name) == 0) ++count;
    } while (NextLine());
    return count;
  }

 private:
  // Passes blanks and returns the character behind them.
  int SkipBlanks() {
    int character = Peek();
    for (; IsBlank(character); character = Peek()) ++at_;
    return character;
  }

  // Goes to the start of the next line. Returns false when this one was the last.
  bool NextLine() {
    for (;;) {
      const auto rest = static_cast<std::size_t>(end_ - at_);
      const void* newline = std::memchr(at_, '\n', rest);
      if (newline != nullptr) {
        at_ = static_cast<const char*>(newline) + 1;
        ++line_;
        return true;
      }
      if (!Refill()) return false;
    }
  }

  // Reads the header that begins here into name, of kMaxField + 1 bytes. Returns false when it has
  // no ']' or its name is too long.
  bool ReadHeader(char* name) {
    ++at_;
    SkipBlanks();
    std::size_t length = 0;
    std::size_t kept = 0;  // without the blanks at the end
    for (int character = Peek(); character != ']'; character = Peek()) {
      if (IsLineEnd(character)) return false;
      if (length < kMaxField) name[length] = static_cast<char>(character);
      ++length;
      if (!IsBlank(character)) kept = length;
      ++at_;
    }
    if (kept > kMaxField) return false;
    name[kept] = '\0';
    return true;
  }

  // Tells most lines from the entry of that name without walking through them. Keys of one kind
  // begin alike and differ at their ends, so the last character is compared before the rest.
  bool MayBe(int first, const char* name, std::size_t length) const {
    if (first == '"') return true;
    if (first != static_cast<unsigned char>(*name) || length == 0 || first == '#') return false;
    if (static_cast<std::size_t>(end_ - at_) < length) return true;
    return at_[length - 1] == name[length - 1] && std::memcmp(at_, name, length) == 0;
  }

  // Tells whether the field that begins here is the name, and passes it when it is.
  bool PassName(const char* name) {
    BeginField();
    for (; *name != '\0'; ++name) {
      if (NextOfField() != static_cast<unsigned char>(*name)) return false;
    }
    return NextOfField() == kFieldEnd;
  }

  // Reads the field that begins here into text, of kMaxField + 1 bytes. Returns false when it is
  // too long or broken.
  bool ReadField(char* text) {
    BeginField();
    std::size_t length = 0;
    int character = NextOfField();
    for (; character >= 0 && length < kMaxField; character = NextOfField()) {
      text[length++] = static_cast<char>(character);
    }
    text[length] = '\0';
    return character == kFieldEnd;
  }

  void EnterBuffer() {
    at_ = reader_.buffer_;
    end_ = at_ + reader_.held_;
  }

  // Cold, so that the compiler keeps the walk itself small.
  [[gnu::cold]] bool Refill() {
    if (reader_.held_ < sizeof reader_.buffer_) return false;
    reader_.Load(reader_.offset_ + static_cast<off_t>(reader_.held_));
    EnterBuffer();
    return at_ != end_;
  }

  int Peek() {
    if (at_ == end_ && !Refill()) return kFileEnd;
    return static_cast<unsigned char>(*at_);
  }

  void BeginField() {
    quoted_ = Peek() == '"';
    if (quoted_) ++at_;
  }

  // Returns the field's next character and passes it, or kFieldEnd or kBrokenField. A line's end
  // is never passed.
  int NextOfField() {
    if (quoted_) return NextOfQuoted();
    const int character = Peek();
    if (EndsField(character)) return kFieldEnd;
    ++at_;
    return character;
  }

  int NextOfQuoted() {
    const int character = Peek();
    if (IsLineEnd(character)) return kBrokenField;
    ++at_;
    if (character == '"') return EndsField(Peek()) ? kFieldEnd : kBrokenField;
    const int next = character == '\\' ? Peek() : kFieldEnd;
    if (next != '"' && next != '\\') return character;
    ++at_;
    return next;
  }

  VoCfgUtil& reader_;
  const char* at_ = nullptr;
  const char* end_ = nullptr;
  int line_ = 1;
  bool quoted_ = false;
};

VoCfgUtil::~VoCfgUtil() { cfg_close(); }

int VoCfgUtil::cfg_open(const char* path) {
  cfg_close();
  // Without O_NONBLOCK opening a FIFO would wait for its writer. Neither a FIFO nor a directory
  // survives the first read.
  file_ = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file_ < 0) return -1;
  Load(0);
  if (failed_) cfg_close();
  return failed_ ? -1 : 0;
}

int VoCfgUtil::cfg_search(const char* key, char* out, int field) {
  found_line_ = 0;
  if (file_ < 0) return -1;
  Cursor cursor(*this);
  const char* name = cursor.FindEntry(key);
  if (name == nullptr) return -1;
  found_line_ = cursor.line();
  char value[kMaxField + 1];
  if (!cursor.ReadEntry(name, field, value) || failed_) return -1;
  std::memcpy(out, value, std::strlen(value) + 1);
  return 0;
}

int VoCfgUtil::cfg_group_count(const char* group) {
  if (file_ < 0) return -1;
  const int count = Cursor(*this).CountHeaders(group);
  return failed_ ? -1 : count;
}

void VoCfgUtil::cfg_close() {
  if (file_ >= 0) close(file_);
  file_ = -1;
}

void VoCfgUtil::Load(off_t offset) {
  const ssize_t size = pread(file_, buffer_, sizeof buffer_, offset);
  failed_ = size < 0;
  offset_ = offset;
  held_ = failed_ ? 0 : static_cast<std::size_t>(size);
}
