// The text form of a plan of devices.
#include <charconv>
#include <system_error>
#include <utility>

#include "platform/zebdev/software/virtual_device_plan.h"

namespace zebx::zebdev {
namespace {

constexpr std::size_t kMaxDevices = 16;
constexpr DWORD kMaxTypeCode = 11;
constexpr DWORD kSecondStreamTypeCode = 11;
constexpr DWORD kMaxChannels = kDeviceChannelsMask;
constexpr DWORD kMaxChannelsWithSecondStream = 2;

std::optional<DWORD> Number(std::string_view digits) {
  DWORD number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (digits.empty() || stop != end || error != std::errc()) return std::nullopt;
  return number;
}

// One device; nothing, with `fault` saying what is wrong with it.
std::optional<VirtualDevice> ParseDevice(std::string_view text, CString& fault) {
  const std::size_t colon = text.find(':');
  const auto type_code = Number(text.substr(0, colon));
  const auto channels =
      colon == std::string_view::npos ? std::nullopt : Number(text.substr(colon + 1));
  if (!type_code || !channels) {
    fault = "a device is its type code, a colon and its number of channels, as in 6:8";
  } else if (*type_code > kMaxTypeCode) {
    fault = "type codes are 0 to 11";
  } else if (*channels < 1 || *channels > kMaxChannels) {
    fault = "a device has 1 to 63 channels";
  } else if (*type_code == kSecondStreamTypeCode && *channels > kMaxChannelsWithSecondStream) {
    fault = "a device of type code 11 has 1 or 2 channels";
  } else {
    return MakeVirtualDevice(DWORD{1} << *type_code, static_cast<BYTE>(*channels));
  }
  fault = "\"" + CString(text) + "\": " + fault;
  return std::nullopt;
}

}  // namespace

std::optional<std::vector<VirtualDevice>> ParseDevicePlan(std::string_view text, CString* fault) {
  CString ignored;
  CString& said = fault != nullptr ? *fault : ignored;
  const std::size_t at = text.find('@');
  const CString directory(at == std::string_view::npos ? "" : text.substr(at + 1));
  if (at != std::string_view::npos && directory.empty()) {
    said = "no directory stands behind the @";
    return std::nullopt;
  }
  std::vector<VirtualDevice> devices;
  std::string_view rest = text.substr(0, at);
  for (bool is_more = true; is_more;) {
    const std::size_t comma = rest.find(',');
    auto device = ParseDevice(rest.substr(0, comma), said);
    if (!device) return std::nullopt;
    device->m_directory = directory;
    devices.push_back(std::move(*device));
    is_more = comma != std::string_view::npos;
    if (is_more) rest.remove_prefix(comma + 1);
  }
  if (devices.size() > kMaxDevices) {
    said = std::to_string(devices.size()) + " devices are more than 16";
    return std::nullopt;
  }
  return devices;
}

}  // namespace zebx::zebdev
