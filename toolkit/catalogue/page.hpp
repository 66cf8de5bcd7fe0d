// The files of page/, which the build puts into the library.
#ifndef VORNATH_TOOLKIT_CATALOGUE_PAGE_HPP
#define VORNATH_TOOLKIT_CATALOGUE_PAGE_HPP

#include <string_view>

namespace vrtk {

/// A file, and the SHA-256 digest of its bytes in base64.
struct PageFile {
  std::string_view text;
  std::string_view digest;
};

extern const PageFile kPageStyle;
extern const PageFile kPageScript;

}  // namespace vrtk

#endif
