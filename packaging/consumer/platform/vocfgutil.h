// A switch's own reader: the same operations in another shape. It knows one entry.
#ifndef VOCFGUTIL_H
#define VOCFGUTIL_H

class VoCfgUtil {
 public:
  VoCfgUtil();
  virtual ~VoCfgUtil();
  virtual int cfg_open(const char* path);
  virtual int cfg_search(const char* key, char* out, int field);
  int cfg_group_count(const char* group);
  void cfg_close();

 private:
  double places_[40];
  bool open_;
};

#endif  // VOCFGUTIL_H
