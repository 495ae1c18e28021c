// A switch's own reader: the same operations in another shape, and files of another form:
//
//   PLAIN=1;2;3          a key and its values
//   OAR#VAR#A=$VAR;5     the same in a group
//   @OAR                 one group of this name, for the count
#ifndef VOCFGUTIL_H
#define VOCFGUTIL_H

#include <string>
#include <vector>

class VoCfgUtil {
 public:
  VoCfgUtil();
  virtual ~VoCfgUtil();
  virtual int cfg_open(const char* path);
  virtual int cfg_search(const char* key, char* out, int field);
  int cfg_group_count(const char* group);
  void cfg_close();

 private:
  int file_ = -1;
  bool failed_before_ = false;
  std::vector<std::string> lines_;
  double places_[40];
};

#endif  // VOCFGUTIL_H
