/// What the renderer cannot use of a scene, told once each.
#ifndef VRN_RENDER_SCENE_READING_NOTICES_HPP
#define VRN_RENDER_SCENE_READING_NOTICES_HPP

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vrn_render {

/// Collects messages. A message that was given before is dropped.
/// Threads: any thread may call add().
class Notices {
 public:
  void add(const std::string& message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (seen_.insert(message).second) messages_.push_back(message);
  }
  const std::vector<std::string>& messages() const { return messages_; }

 private:
  std::mutex mutex_;
  std::set<std::string> seen_;
  std::vector<std::string> messages_;
};

}  // namespace vrn_render

#endif
