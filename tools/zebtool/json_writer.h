// Facts as JSON, written as they come: nothing is kept but the nesting.
#pragma once

#include <concepts>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace zebtool {

// Objects and arrays are opened and closed in pairs. Inside an object every value has a key, inside
// an array and at the top the key is empty. Bytes that are no UTF-8 are written as if Latin-1.
class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : m_out(out) {}

  void BeginObject(std::string_view key = {}) { Begin(key, '{'); }
  void EndObject() { End('}'); }
  void BeginArray(std::string_view key = {}) { Begin(key, '['); }
  void EndArray() { End(']'); }

  void Value(std::string_view key, std::string_view text);
  void Value(std::string_view key, const char* text) { Value(key, std::string_view(text)); }
  void Value(std::string_view key, const std::string& text) { Value(key, std::string_view{text}); }
  template <std::same_as<bool> Truth>
  void Value(std::string_view key, Truth truth) {
    Raw(key, truth ? "true" : "false");
  }
  template <class Number>
  requires(std::integral<Number> && !std::same_as<Number, bool>) void Value(std::string_view key,
                                                                            Number number) {
    Raw(key, std::to_string(number));
  }
  // With three decimals.
  void Value(std::string_view key, double number);

 private:
  void Begin(std::string_view key, char bracket);
  void End(char bracket);
  void Raw(std::string_view key, std::string_view value);
  void StartValue(std::string_view key);

  std::ostream& m_out;
  std::vector<bool> m_has_values;  // one per open bracket
};

}  // namespace zebtool
