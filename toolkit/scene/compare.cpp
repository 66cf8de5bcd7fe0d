// Comparison and print-out of whole scenes.
#include <array>
#include <memory>
#include <ostream>
#include <streambuf>

#include "foundation/failure.hpp"
#include "scene/complete.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_scene.h"

namespace vrtk {
namespace {

// A stream buffer that gives bytes to a function of the caller in large pieces. The library flushes
// each line, which is no reason to call the function.
class CallbackBuffer final : public std::streambuf {
 public:
  CallbackBuffer(vrtkWriteFunction write, void* context) : write_(write), context_(context) {
    setp(piece_.data(), piece_.data() + piece_.size());
  }

  void finish() {
    const auto size = static_cast<std::uint64_t>(pptr() - pbase());
    setp(piece_.data(), piece_.data() + piece_.size());
    if (size != 0 && write_(piece_.data(), size, context_) != 0) {
      throw Failure(VRTK_WRITE_STOPPED, "the function that takes the text asked to stop");
    }
  }

 protected:
  int_type overflow(int_type c) override {
    finish();
    if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }

 private:
  vrtkWriteFunction write_;
  void* context_;
  std::array<char, 65536> piece_;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneEquivalent(const vrdmScene_t* a, const vrdmScene_t* b, bool* equivalent,
                                  vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(a, "vrtkSceneEquivalent", "a");
    vrtk::requireArgument(b, "vrtkSceneEquivalent", "b");
    vrtk::requireArgument(equivalent, "vrtkSceneEquivalent", "equivalent");
    vrtk::requireValues(*a, "be compared");
    vrtk::requireValues(*b, "be compared");
    *equivalent = vrnt::data::Scene::equivalent(*a, *b);
  });
}

std::uint32_t vrtkSceneDump(const vrdmScene_t* scene, vrtkWriteFunction write, void* context,
                            vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneDump", "scene");
    vrtk::requireArgument(reinterpret_cast<const void*>(write), "vrtkSceneDump", "write");
    vrtk::requireValues(*scene, "be printed");
    const auto buffer = std::make_unique<vrtk::CallbackBuffer>(write, context);
    std::ostream stream(buffer.get());
    stream.exceptions(std::ios::badbit);
    stream << *scene;
    buffer->finish();
  });
}
