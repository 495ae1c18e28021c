#include "devhost/field_value.h"

#include <cstdint>
#include <cstring>
#include <limits>

namespace devhost {
namespace {

using Json = nlohmann::ordered_json;
using Cause = std::optional<std::string>;

constexpr const char* kHexMember = "hex";

int HexDigit(char digit) {
  static constexpr char kDigits[] = "0123456789abcdefABCDEF";
  const char* found = digit == '\0' ? nullptr : std::strchr(kDigits, digit);
  if (found == nullptr) return -1;
  const auto value = static_cast<int>(found - kDigits);
  return value < 16 ? value : value - 6;
}

Cause PutHex(std::size_t size, const Json& value, char* out) {
  if (value.size() != 1 || !value.contains(kHexMember) || !value[kHexMember].is_string()) {
    return "an object must be {\"hex\": \"...\"}";
  }
  const auto digits = value[kHexMember].get<std::string>();
  if (digits.size() % 2 != 0) return "an odd number of hexadecimal digits";
  if (digits.size() / 2 > size) {
    return std::to_string(digits.size() / 2) + " bytes do not fit into " + std::to_string(size);
  }
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const int high = HexDigit(digits[i]);
    const int low = HexDigit(digits[i + 1]);
    if (high < 0 || low < 0) return "not hexadecimal: \"" + Quotable(digits.substr(i, 2)) + "\"";
    out[i / 2] = static_cast<char>(high * 16 + low);
  }
  return std::nullopt;
}

Cause PutText(std::size_t size, const Json& value, char* out) {
  if (!value.is_string()) return "not a text";
  const auto text = value.get<std::string>();
  if (text.size() >= size) {
    return "a text of " + std::to_string(text.size()) + " characters, " + std::to_string(size - 1) +
           " fit";
  }
  if (text.find('\0') != std::string::npos) return "a NUL inside a text";
  text.copy(out, text.size());
  return std::nullopt;
}

Cause PutCharacter(const Json& value, char* out) {
  if (!value.is_string() || value.get_ref<const std::string&>().size() != 1) {
    return "not a text of one character";
  }
  *out = value.get_ref<const std::string&>().front();
  return std::nullopt;
}

Cause PutInt32(const Json& value, char* out) {
  const std::optional<int> number = IntOf(value);
  if (!number.has_value()) return "not a whole number of 32 bits";
  std::memcpy(out, &*number, sizeof *number);
  return std::nullopt;
}

}  // namespace

std::string Quotable(const std::string& text) {
  const std::string quoted = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  return quoted.substr(1, quoted.size() - 2);
}

std::optional<int> IntOf(const Json& value) {
  using Limits = std::numeric_limits<int>;
  if (!value.is_number_integer()) return std::nullopt;
  const bool huge = value.is_number_unsigned() &&
                    value.get<std::uint64_t>() > static_cast<std::uint64_t>(Limits::max());
  const auto number = value.get<std::int64_t>();
  if (huge || number < Limits::min() || number > Limits::max()) return std::nullopt;
  return static_cast<int>(number);
}

std::optional<std::string> PutField(const records::RecordField& field, const Json& value,
                                    char* record) {
  char* const out = record + field.offset;
  if (value.is_object()) return PutHex(field.size, value, out);
  switch (field.kind) {
    case records::FieldKind::kText:
      return PutText(field.size, value, out);
    case records::FieldKind::kCharacter:
      return PutCharacter(value, out);
    case records::FieldKind::kInt32:
      return PutInt32(value, out);
    case records::FieldKind::kBytes:
      break;
  }
  return "bytes are given as {\"hex\": \"...\"}";
}

}  // namespace devhost
