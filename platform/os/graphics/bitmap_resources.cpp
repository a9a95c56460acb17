#include "platform/os/graphics/bitmap_resources.h"

#include <map>
#include <mutex>
#include <utility>

namespace os {

namespace {

using Resource = std::shared_ptr<const std::vector<BYTE>>;

struct Registry {
  std::mutex m_mutex;
  std::map<WORD, Resource> m_resources;  // guarded by m_mutex

  static Registry& Get() {
    // Never destroyed: a host's threads may end after main has.
    static Registry& registry = *new Registry;
    return registry;
  }
};

}  // namespace

void RegisterBitmapResource(UINT id, std::span<const BYTE> packed_dib) {
  auto resource = std::make_shared<const std::vector<BYTE>>(packed_dib.begin(), packed_dib.end());
  Registry& registry = Registry::Get();
  const std::lock_guard lock(registry.m_mutex);
  registry.m_resources[static_cast<WORD>(id)] = std::move(resource);
}

Resource FindBitmapResource(UINT id) {
  Registry& registry = Registry::Get();
  const std::lock_guard lock(registry.m_mutex);
  const auto found = registry.m_resources.find(static_cast<WORD>(id));
  return found != registry.m_resources.end() ? found->second : nullptr;
}

}  // namespace os
