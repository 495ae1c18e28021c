// VoCfgUtil: the switch's configuration reader.
#ifndef VOCFGUTIL_H
#define VOCFGUTIL_H

#include <sys/types.h>

#include <cstddef>

// Reads text configuration files of this form:
//
//   # comment: the first non-blank character is '#'
//   MAXSECURITY   64                      plain key, before the first group
//   [VOBUSINESS]                          a group; items below it are VOBUSINESS#ITEM
//   MAXATM        1200
//   [OAR#VAR]                             a group name may itself hold '#'
//   A             $VAR     5              OAR#VAR#A: field 2 is $VAR, field 3 is 5
//   B             "two words"  ""         quotes keep blanks and allow an empty field
//
// Fields are separated by blanks or tabs; the key is field 1. A field that begins with a double
// quote runs to the next one; \" and \\ stand for a quote and a backslash inside it. LF and CRLF
// both end a line: outside quotes a carriage return counts as a blank. The first entry of a key
// wins; groups of one name read as one. A field longer than kMaxField characters, an unclosed
// quote, or text straight after a closing quote makes its entry unreadable, or nameless when it is
// field 1's quote. A header's name runs to the first ']', blanks around it left out, and the rest
// of the line says nothing; a header without ']' or with a name longer than kMaxField hides the
// items below it.
//
// Files of any size and lines of any length are read through the object's own buffer: no heap, no
// state outside the object. A reader serves one thread.
class [[gnu::visibility("default")]] VoCfgUtil {
 public:
  static constexpr int kMaxField = 150;  // characters of a field, quotes not counted

  VoCfgUtil() = default;
  ~VoCfgUtil();  // closes the file, if one is open
  VoCfgUtil(const VoCfgUtil&) = delete;
  VoCfgUtil& operator=(const VoCfgUtil&) = delete;

  // Opens a file for searching. An open one is closed first, whatever follows. Returns 0, or -1
  // when the path does not open, cannot be read, or names a directory.
  int cfg_open(const char* path);

  // Copies one field of the first entry of a key, NUL-terminated, into out, which must hold it:
  // kMaxField + 1 bytes hold any. A grouped key is GROUP#ITEM. Field 1 is the key's own column,
  // field 2 the first value. Returns 0, or -1 with out untouched when no file is open, the key is
  // absent, its first entry is unreadable or has fewer fields, or the file cannot be read.
  int cfg_search(const char* key, char* out, int field);

  // Returns how many headers of exactly this group name the file has, 0 when none, -1 when no file
  // is open or it cannot be read.
  int cfg_group_count(const char* group);

  // Closes the file. Closing twice is harmless.
  void cfg_close();

  // The line (from 1) of the entry that the last search found or found unreadable; 0 when it found
  // none. The message for a person belongs to the caller.
  int line() const { return found_line_; }

 private:
  class [[gnu::visibility("hidden")]] Cursor;

  void Load(off_t offset);

  int file_ = -1;
  int found_line_ = 0;
  off_t offset_ = 0;      // where in the file the buffer's text begins
  std::size_t held_ = 0;  // the text's length; less than the buffer's only at the file's end
  bool failed_ = false;   // the last read failed
  // Never zeroed: that would cost more than a search.
  alignas(64) char buffer_[16 * 1024];
};

#endif  // VOCFGUTIL_H
