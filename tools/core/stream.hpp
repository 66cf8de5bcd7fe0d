// Documents that functions of the toolkit write in pieces.
#ifndef VRN_CORE_STREAM_HPP
#define VRN_CORE_STREAM_HPP

#include <exception>
#include <string_view>

#include "core/session.hpp"

namespace vrn {

/// Runs a function of the toolkit, `call(write, context, error)`, whose document goes to standard
/// output. Throws Trouble and ReaderGone.
template <typename Call>
void requireStreamed(Session& session, Call&& call) {
  struct Target {
    Output* out;
    std::exception_ptr thrown;
  } target{&session.out(), nullptr};
  // An exception must not pass through the toolkit.
  const auto write = [](const void* bytes, std::uint64_t size, void* context) -> std::uint32_t {
    auto* const to = static_cast<Target*>(context);
    try {
      to->out->write({static_cast<const char*>(bytes), static_cast<std::size_t>(size)});
      return 0;
    } catch (...) {
      to->thrown = std::current_exception();
      return 1;
    }
  };
  ErrorOut error;
  const std::uint32_t status = call(+write, &target, static_cast<vrtkError**>(error));
  if (target.thrown) std::rethrow_exception(target.thrown);
  if (status != VRTK_OK) throw Trouble(error.message());
}

/// Prints a text that ends in exactly one line feed.
inline void printJson(Session& session, std::string_view text) {
  while (!text.empty() && text.back() == '\n') text.remove_suffix(1);
  session.out() << text << "\n";
}

}  // namespace vrn

#endif
