// The bytes of an input file.
#ifndef VRN_CONVERT_PROGRAM_INPUT_HPP
#define VRN_CONVERT_PROGRAM_INPUT_HPP

#include <string>
#include <vector>

namespace vrn_convert {

/// The bytes of a file, mapped into memory, or read if it is a stream.
class Input {
 public:
  /// Reads standard input for the path -. Throws Refused.
  explicit Input(const std::string& path);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();

  const unsigned char* bytes() const { return bytes_; }
  std::size_t size() const { return size_; }

 private:
  void readAll(int descriptor);

  const unsigned char* bytes_ = nullptr;
  std::size_t size_ = 0;
  void* map_ = nullptr;
  std::vector<unsigned char> read_;
};

}  // namespace vrn_convert

#endif
