#include "scene/address.hpp"

#include <fmt/format.h>

#include <charconv>

#include "foundation/failure.hpp"
#include "json/problems.hpp"

namespace vrtk {
namespace {

// The address is followed name by name.
class Walk {
 public:
  Walk(const vrdmScene_t* scene, Catalogue& catalogue, std::string_view address)
      : scene_(scene), catalogue_(catalogue), address_(address), names_(splitPath(address)) {
    // The classes also go by their place in the document.
    if (!names_.empty() && names_.front() == "objects" && names_.size() > 1) {
      names_.erase(names_.begin());
    }
  }

  Address run() {
    top();
    found_.rest.assign(names_.begin() + static_cast<std::ptrdiff_t>(next_), names_.end());
    return found_;
  }

 private:
  bool atEnd() const { return next_ == names_.size(); }

  void enter(Address::Part part) {
    if (!found_.path.empty()) found_.path += '/';
    found_.path += names_[next_++];
    found_.part = part;
  }

  [[noreturn]] void unknown(const std::vector<std::string_view>& names) {
    failUnknown(address_, found_.path, names_[next_], names);
  }

  void top() {
    if (atEnd()) return;
    const std::string& name = names_[next_];
    if (name == "id") {
      enter(Address::Part::SceneId);
    } else if (name == "format" || name == "formatVersion" || name == "sceneVersion") {
      enter(Address::Part::Head);
    } else if (name == "scene") {
      enter(Address::Part::SceneGroups);
      if (!atEnd()) group(VRDM_CLASS_SCENE_DATA, Address::Part::SceneGroup);
    } else {
      objectClass(name);
    }
  }

  void objectClass(const std::string& name) {
    std::vector<std::string_view> names = {"scene", "id"};
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
      names.emplace_back(vrdmObjectName(c));
      if (name != vrdmObjectName(c)) continue;
      found_.objectClass = c;
      enter(Address::Part::Class);
      if (!atEnd()) object();
      return;
    }
    unknown(names);
  }

  void object() {
    const std::string& name = names_[next_];
    const std::uint32_t slots = vrdmContainerSize(scene_, found_.objectClass);
    std::uint32_t index = 0;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), index);
    const bool isNumber = read.ec == std::errc() && read.ptr == name.data() + name.size() &&
                          (name.size() == 1 || name.front() != '0');
    if (!isNumber || index >= slots) {
      const char* const className = vrdmObjectName(found_.objectClass);
      throw Failure(VRTK_ADDRESS_UNKNOWN,
                    slots == 0
                        ? fmt::format("{}: the scene has no {}", address_, className)
                        : fmt::format("{}: there is no {} {}; expected an index from 0 to {}",
                                      address_, className, quoted(name), slots - 1));
    }
    found_.index = static_cast<std::int32_t>(index);
    if (!vrdmValid(scene_, found_.objectClass, found_.index)) {
      enter(Address::Part::FreeSlot);
      if (!atEnd()) {
        throw Failure(VRTK_ADDRESS_UNKNOWN, fmt::format("{}: {} is a free slot, without an object",
                                                        address_, found_.path));
      }
      return;
    }
    switch (vrdmObjectClass(found_.objectClass)) {
      case VRDM_KIND_PROGRAM:
        enter(Address::Part::Program);
        return;
      case VRDM_KIND_ASSET:
        enter(Address::Part::Asset);
        return;
      default:
        enter(Address::Part::Instance);
        if (!atEnd()) instance();
    }
  }

  void instance() {
    const ClassDescription& description = catalogue_.of(found_.objectClass);
    const std::string& name = names_[next_];
    if (name == "groups" && !description.trees.empty()) {
      enter(Address::Part::Groups);
      if (!atEnd()) group(found_.objectClass, Address::Part::Group);
    } else if (name == "slots" && !description.slots.empty()) {
      enter(Address::Part::Slots);
      if (!atEnd()) slot(description);
    } else if (name == "value" && description.layout.hasValue) {
      enter(Address::Part::Value);
    } else {
      std::vector<std::string_view> names;
      if (!description.trees.empty()) names.emplace_back("groups");
      if (!description.slots.empty()) names.emplace_back("slots");
      if (description.layout.hasValue) names.emplace_back("value");
      unknown(names);
    }
  }

  void group(std::uint32_t objectClass, Address::Part part) {
    std::vector<std::string_view> names;
    const auto& groups = catalogue_.of(objectClass).groups.groups;
    for (std::uint32_t i = 0; i < groups.size(); ++i) {
      names.emplace_back(groups[i].name);
      if (groups[i].name != names_[next_]) continue;
      found_.item = i;
      enter(part);
      return;
    }
    unknown(names);
  }

  void slot(const ClassDescription& description) {
    std::vector<std::string_view> names;
    for (std::uint32_t i = 0; i < description.slots.size(); ++i) {
      names.emplace_back(description.slots[i].info.name);
      if (names_[next_] != description.slots[i].info.name) continue;
      found_.item = i;
      enter(Address::Part::Slot);
      return;
    }
    unknown(names);
  }

  const vrdmScene_t* scene_;
  Catalogue& catalogue_;
  std::string_view address_;
  std::vector<std::string> names_;
  std::size_t next_ = 0;
  Address found_;
};

}  // namespace

std::vector<std::string> splitPath(std::string_view path) {
  std::vector<std::string> names;
  if (path.empty()) return names;
  names.emplace_back();
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '/') {
      names.emplace_back();
    } else if (path[i] == '~' && i + 1 < path.size() &&
               (path[i + 1] == '0' || path[i + 1] == '1')) {
      names.back() += path[++i] == '0' ? '~' : '/';
    } else {
      names.back() += path[i];
    }
  }
  return names;
}

void failUnknown(std::string_view address, const std::string& path, std::string_view name,
                 const std::vector<std::string_view>& names) {
  throw Failure(
      VRTK_ADDRESS_UNKNOWN,
      fmt::format("{}: {} has nothing called {}{}", std::string(address.substr(0, 200)),
                  path.empty() ? "the scene" : path, quoted(name), suggestion(name, names)));
}

Address resolveAddress(const vrdmScene_t* scene, Catalogue& catalogue, std::string_view address) {
  return Walk(scene, catalogue, address).run();
}

}  // namespace vrtk
