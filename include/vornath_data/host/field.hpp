/// Access to fields of values. A field is found once, by a path of labels. It can then be read and
/// written in any value of the type, at the cost of a copy of its bytes.
#ifndef VORNATH_DATA_HOST_FIELD_HPP
#define VORNATH_DATA_HOST_FIELD_HPP

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "vornath_data/colour.h"
#include "vornath_data/value.hpp"

namespace vrnt::host {

/// The place of a field in the values of a type. Holds a reference on the type.
/// Threads: immutable; any number of threads may use it at the same time.
class FieldPath {
 public:
  /// Finds a field by labels and indices, for example `matrix.w`, `textures[2].index` or, in an
  /// array of two dimensions, `grid[3,1]`. An empty path is the whole value. References are not
  /// followed. The type may carry annotations, as the type of vrdmFieldType() does.
  /// Errors: throws Exception "Field path {}: {}.", which names the label or index that does not
  /// exist and the type in which it was looked up.
  FieldPath(const vrntType_t* type, std::string_view path)
      : whole_(TypeHandle::adopt(vrntTypeStripMetadata(type))), place_{whole_.get(), 0} {
    for (std::size_t at = 0; at < path.size();) {
      at = path[at] == '[' ? enterElement(path, at) : enterField(path, at);
    }
  }

  /// Returns the type of the values that hold the field, without annotations, as every value's type
  /// is.
  const TypeHandle& wholeType() const noexcept { return whole_; }
  /// Returns the type of the field, borrowed from wholeType().
  const vrntType_t* type() const noexcept { return place_.type; }
  /// Returns the offset in bytes from the beginning of the value.
  std::uint64_t offset() const noexcept { return place_.offset; }
  /// Returns the type and offset for the flat functions.
  const vrntValueView_t& place() const noexcept { return place_; }

  /// Returns the bytes of the field in a value, borrowed until the next write to the value.
  /// Errors: throws Exception "Incompatible type for value -> {}." if the value has another type.
  const void* bytesIn(const Value& value) const {
    requireType(value);
    return firstByte(value.get()) + place_.offset;
  }

  /// Calls `fill(void* bytes)` to write the bytes of the field. If others share the value's block,
  /// first moves the value to a copy. `fill` must not throw.
  /// Errors: as bytesIn(); std::bad_alloc. Nothing is written then.
  template <typename Fill>
  void writeIn(Value& value, Fill&& fill) const {
    requireType(value);
    vrntValuesError_t* error = nullptr;
    void* const bytes = vrntValueMap(value.address(), &place_, &error);
    if (bytes == nullptr) vrnt::detail::raiseError(error);
    fill(bytes);
    vrntValueUnmap(value.get(), &place_);
  }

  /// As writeIn(), but for a field without references. This is faster, because no reference counts
  /// change.
  template <typename Fill>
  void writePlainIn(Value& value, Fill&& fill) const {
    requireType(value);
    vrntValue_t* const block = value.get();
    if (__atomic_load_n(&block->refCount, __ATOMIC_ACQUIRE) != 1U) {
      writeIn(value, fill);
    } else {
      fill(firstByte(block) + place_.offset);
    }
  }

 private:
  static_assert(sizeof(vrntValue_t) == 48, "a value's bytes stand 48 bytes behind its block");
  static char* firstByte(vrntValue_t* block) noexcept { return reinterpret_cast<char*>(block + 1); }

  void requireType(const Value& value) const {
    if (value.get() == nullptr || value.get()->type != whole_.get()) raiseOtherType(value);
  }
  [[noreturn]] void raiseOtherType(const Value& value) const {
    const std::string given = value ? "type " + vrnt::detail::shownText(value.type()) : "no value";
    throw Exception(ErrorCode::InvalidArguments, "Incompatible type for value -> {}.",
                    given + " does not match type " + vrnt::detail::shownText(whole_.get()));
  }

  [[noreturn]] static void raise(std::string_view path, const std::string& words) {
    throw Exception(ErrorCode::InvalidArguments, "Field path {}: {}.", path, words);
  }
  [[noreturn]] void raiseMissing(std::string_view path, const char* what,
                                 std::string_view name) const {
    raise(path, std::string("there is no ") + what + " " + std::string(name) + " in " +
                    vrnt::detail::shownText(place_.type));
  }

  // Both functions return the position behind the part of the path that they parsed.

  std::size_t enterField(std::string_view path, std::size_t at) {
    if (at != 0 && path[at++] != '.') raise(path, "a . or a [ is missing");
    const std::size_t end = std::min(path.find_first_of(".[", at), path.size());
    const std::string_view label = path.substr(at, end - at);
    if (label.empty()) raise(path, "a label is missing");
    const bool isStruct = vrnt::detail::isStruct(place_.type);
    const std::uint32_t count = isStruct ? vrntTypeFieldCount(place_.type) : 0;
    std::uint32_t index = 0;
    while (index < count && label != vrntTypeFieldLabel(place_.type, index)) ++index;
    if (index == count) raiseMissing(path, "field", label);
    vrntValueView_t field{};
    vrntValueStructField(&field, place_.type, index);
    place_ = {field.type, place_.offset + field.offset};
    if (end + 1 == path.size() && path[end] == '.') raise(path, "a label is missing");
    return end;
  }

  std::size_t enterElement(std::string_view path, std::size_t at) {
    const std::size_t end = path.find(']', at);
    if (end == std::string_view::npos) raise(path, "a ] is missing");
    std::array<std::int32_t, 4> numbers{};
    std::array<std::int32_t, 4> extents{};
    const bool isArray = vrntTypeDescriptor(place_.type) == VRNT_DESCRIPTOR_ARRAY;
    const std::size_t rank = isArray ? vrntTypeArrayDimension(place_.type) : 0;
    if (isArray) vrntTypeArrayShape(place_.type, extents.data());
    const char* next = path.data() + at + 1;
    const char* const last = path.data() + end;
    bool exists = rank != 0;
    for (std::size_t i = 0; i < rank && exists; ++i) {
      const auto [behind, failed] = std::from_chars(next, last, numbers[i]);
      exists = failed == std::errc() && *next != '-' && numbers[i] < extents[i] &&
               *behind == (i + 1 == rank ? ']' : ',');
      next = behind + 1;
    }
    if (!exists) raiseMissing(path, "element", path.substr(at, end + 1 - at));
    vrntValueView_t element{};
    vrntValueArrayElement(&element, place_.type, numbers.data());
    place_ = {element.type, place_.offset + element.offset};
    return end + 1;
  }

  TypeHandle whole_;
  vrntValueView_t place_;
};

/// A field that is read and written as a T. T is one of the types of ConstBasicView::read().
template <typename T>
class Field {
 public:
  /// Finds the field.
  /// Errors: those of FieldPath; throws Exception "Incompatible type for accessor -> {}." if T does
  /// not fit the type of the field.
  Field(const vrntType_t* type, std::string_view path) : Field(FieldPath(type, path), path) {}
  Field(const TypeHandle& type, std::string_view path) : Field(type.get(), path) {}

  /// Takes a path that is already found. `name` is the field's name for error messages.
  explicit Field(FieldPath path, std::string_view name = {}) : path_(std::move(path)) {
    static_assert(vrnt::detail::kCanFit<T>,
                  "a field is a float, bool, 32-bit integer or character, std::uint16_t for the "
                  "bits of a half, an enum of 32 or 8 bits, a std::array of these, or a trivially "
                  "copyable struct: in place of a double take a float");
    if (!vrnt::detail::fits<T>(path_.type())) {
      vrnt::detail::raiseUnfit(path_.type(), name, "type " + vrnt::detail::fittingText<T>());
    }
  }

  /// Reads the field.
  /// Errors: as FieldPath::bytesIn().
  T get(const Value& value) const {
    T result;
    vrnt::detail::load(result, path_.bytesIn(value));
    return result;
  }
  /// Writes the field.
  /// Errors: as FieldPath::writeIn().
  void set(Value& value, const T& field) const {
    const auto fill = [&field](void* bytes) { vrnt::detail::store(bytes, field); };
    if constexpr (vrnt::detail::holdsNoWords<T>()) {
      path_.writePlainIn(value, fill);
    } else {
      path_.writeIn(value, fill);
    }
  }

  const FieldPath& path() const noexcept { return path_; }

 private:
  FieldPath path_;
};

/// A field that is an enum, read and written by the names of its constructors.
class EnumField {
 public:
  /// Finds the field.
  /// Errors: those of FieldPath; throws Exception "Incompatible type for accessor -> {}." if the
  /// field is not an enum.
  EnumField(const vrntType_t* type, std::string_view path)
      : EnumField(FieldPath(type, path), path) {}
  EnumField(const TypeHandle& type, std::string_view path) : EnumField(type.get(), path) {}
  explicit EnumField(FieldPath path, std::string_view name = {}) : path_(std::move(path)) {
    if (vrntTypeDescriptor(path_.type()) != VRNT_DESCRIPTOR_ENUM) {
      vrnt::detail::raiseUnfit(path_.type(), name, "an enum");
    }
  }

  /// Returns the code of a constructor. Throws Exception "Invalid enum constructor: {}" if there is
  /// none of this name.
  std::int32_t code(std::string_view constructor) const {
    const std::uint32_t count = vrntTypeConstructorCount(path_.type());
    for (std::uint32_t i = 0; i < count; ++i) {
      if (constructor == vrntTypeConstructorName(path_.type(), i)) {
        return static_cast<std::int32_t>(i);
      }
    }
    throw Exception(ErrorCode::InvalidArguments, "Invalid enum constructor: {}", constructor);
  }

  /// Reads the field as the name of a constructor, borrowed from the type.
  /// Errors: as FieldPath::bytesIn(); throws Exception "Enum code out of range: {}" for a code
  /// without a constructor.
  std::string_view get(const Value& value) const {
    std::int32_t number = 0;
    vrnt::detail::load(number, path_.bytesIn(value));
    if (number < 0 ||
        static_cast<std::uint32_t>(number) >= vrntTypeConstructorCount(path_.type())) {
      throw Exception(ErrorCode::InvalidArguments, "Enum code out of range: {}", number);
    }
    return vrntTypeConstructorName(path_.type(), static_cast<std::uint32_t>(number));
  }
  /// Writes the code of a constructor.
  /// Errors: as FieldPath::writeIn() and code().
  void set(Value& value, std::string_view constructor) const {
    const std::int32_t number = code(constructor);
    path_.writePlainIn(value, [number](void* bytes) { vrnt::detail::store(bytes, number); });
  }

  const FieldPath& path() const noexcept { return path_; }

 private:
  FieldPath path_;
};

/// A field that is an array of characters, read and written as a zero-terminated string.
class TextField {
 public:
  /// Finds the field.
  /// Errors: those of FieldPath; throws Exception "Incompatible type for accessor -> {}." if the
  /// field is not an array of characters.
  TextField(const vrntType_t* type, std::string_view path)
      : TextField(FieldPath(type, path), path) {}
  TextField(const TypeHandle& type, std::string_view path) : TextField(type.get(), path) {}
  explicit TextField(FieldPath path, std::string_view name = {}) : path_(std::move(path)) {
    if (!isText(path_.type())) vrnt::detail::raiseUnfit(path_.type(), name, "an array of char");
  }

  /// Returns the maximal size of the string in bytes, without the terminator.
  std::size_t capacity() const { return vrntTypeSize(path_.type()) - 1; }

  /// Reads the string up to the first zero, or the whole array.
  /// Errors: as FieldPath::bytesIn().
  std::string get(const Value& value) const {
    const char* const bytes = static_cast<const char*>(path_.bytesIn(value));
    const void* const zero = std::memchr(bytes, '\0', capacity() + 1);
    return {bytes, zero != nullptr ? static_cast<const char*>(zero) : bytes + capacity() + 1};
  }
  /// Writes the string and fills the rest of the array with zeros.
  /// Errors: as FieldPath::writeIn(); throws Exception "Text of {} bytes does not fit {}." if the
  /// string is too long or contains a zero.
  void set(Value& value, std::string_view text) const {
    if (text.size() > capacity() || text.find('\0') != std::string_view::npos) {
      throw Exception(ErrorCode::InvalidArguments, "Text of {} bytes does not fit {}.", text.size(),
                      vrnt::detail::shownText(path_.type()));
    }
    const std::size_t size = capacity() + 1;
    path_.writePlainIn(value, [text, size](void* bytes) {
      // The text may overlap the bytes of this field.
      if (!text.empty()) std::memmove(bytes, text.data(), text.size());
      std::memset(static_cast<char*>(bytes) + text.size(), 0, size - text.size());
    });
  }

  const FieldPath& path() const noexcept { return path_; }

  /// Returns true for a sized one-dimensional array of characters.
  static bool isText(const vrntType_t* type) {
    if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY || vrntTypeArrayDimension(type) != 1 ||
        vrntTypeSize(type) == 0) {
      return false;
    }
    const TypeHandle element = TypeHandle::adopt(vrntTypeElementType(type));
    return vrnt::detail::fits<char>(element.get());
  }

 private:
  FieldPath path_;
};

/// A spectrum with the same value at all wavelengths.
struct FlatSpectrum {
  float value = 0;
};

/// A linear RGB colour.
struct RgbSpectrum {
  float red = 0, green = 0, blue = 0;
};

/// A step function over wavelengths in nm. The wavelengths must increase. Each amplitude holds from
/// its own wavelength to the next one, and the last amplitude holds to `end`.
struct SampledSpectrum {
  std::vector<float> wavelengths;
  std::vector<float> amplitudes;
  float end = 0;
};

/// A field that is a spectrum: the struct of vrntTypeSpectrum(), or a subtype of it.
class SpectrumField {
 public:
  /// Finds the field.
  /// Errors: those of FieldPath; throws Exception "Incompatible type for accessor -> {}." if the
  /// field is not a spectrum.
  SpectrumField(const vrntType_t* type, std::string_view path)
      : SpectrumField(FieldPath(type, path), path) {}
  SpectrumField(const TypeHandle& type, std::string_view path) : SpectrumField(type.get(), path) {}
  explicit SpectrumField(FieldPath path, std::string_view name = {}) : path_(std::move(path)) {
    const TypeHandle spectrum = TypeHandle::adopt(vrntTypeSpectrum());
    if (vrntTypeIsSubType(path_.type(), spectrum.get()) == 0) {
      vrnt::detail::raiseUnfit(path_.type(), name, "a spectrum");
    }
    vrntValueStructField(&encoding_, path_.type(), 0);
    vrntValueStructField(&numbers_, path_.type(), 1);
    encoding_.offset += path_.offset();
    numbers_.offset += path_.offset();
  }

  /// Returns the encoding, one of VRNT_ENCODING_*.
  std::int32_t encoding(const Value& value) const {
    std::int32_t code = 0;
    const auto* const bytes = static_cast<const char*>(path_.bytesIn(value));
    std::memcpy(&code, bytes + (encoding_.offset - path_.offset()), sizeof(code));
    return code;
  }
  /// Returns the numbers as they are stored: one, three, or pairs of wavelength and amplitude.
  /// Returns none if the reference of the spectrum is null.
  std::vector<float> numbers(const Value& value) const {
    static_cast<void>(path_.bytesIn(value));
    const Value array = Value::adopt(vrntValueDereference(value.get(), &numbers_));
    if (!array) return {};
    std::vector<float> floats(vrntTypeSize(array.type()) / sizeof(float));
    if (!floats.empty()) std::memcpy(floats.data(), array.data(), floats.size() * sizeof(float));
    return floats;
  }

  /// Writes the spectrum. Errors of all three overloads: as FieldPath::writeIn(); throws Exception
  /// "Incompatible type for accessor -> {}." if the field cannot refer to this many numbers.
  /// Nothing is written then.
  void set(Value& value, const FlatSpectrum& spectrum) const {
    write(value, VRNT_ENCODING_LUMINANCE, {spectrum.value});
  }
  void set(Value& value, const RgbSpectrum& spectrum) const {
    write(value, VRNT_ENCODING_RGB, {spectrum.red, spectrum.green, spectrum.blue});
  }
  /// Also throws Exception "Wavelengths and amplitudes are {} and {}." if the sizes differ, and
  /// "Wavelengths must increase: {} comes behind {}.".
  void set(Value& value, const SampledSpectrum& spectrum) const {
    if (spectrum.wavelengths.size() != spectrum.amplitudes.size()) {
      throw Exception(ErrorCode::InvalidArguments, "Wavelengths and amplitudes are {} and {}.",
                      spectrum.wavelengths.size(), spectrum.amplitudes.size());
    }
    // The first pair is (0, 0). The last pair ends the distribution with an amplitude of 0.
    std::vector<float> pairs = {0.0F, 0.0F};
    pairs.reserve(2 * spectrum.wavelengths.size() + 4);
    for (std::size_t i = 0; i < spectrum.wavelengths.size(); ++i) {
      add(pairs, spectrum.wavelengths[i], spectrum.amplitudes[i]);
    }
    add(pairs, spectrum.end, 0.0F);
    write(value, VRNT_ENCODING_SPECTRAL, pairs);
  }

  const FieldPath& path() const noexcept { return path_; }

 private:
  static void add(std::vector<float>& pairs, float wavelength, float amplitude) {
    const float before = pairs[pairs.size() - 2];
    if (!(wavelength > before)) {
      throw Exception(ErrorCode::InvalidArguments, "Wavelengths must increase: {} comes behind {}.",
                      wavelength, before);
    }
    pairs.push_back(wavelength);
    pairs.push_back(amplitude);
  }

  // The numbers are a value of their own, and are set first. After that the value's block is not
  // shared, so that the write of the encoding cannot fail.
  void write(Value& value, std::int32_t encoding, const std::vector<float>& numbers) const {
    static_cast<void>(path_.bytesIn(value));
    const TypeHandle type = TypeHandle::adopt(vrtnTypeFloatArray(numbers.size()));
    const TypeHandle target = TypeHandle::adopt(vrntTypeReferencedType(numbers_.type));
    if (!target || vrntTypeIsSubType(type.get(), target.get()) == 0) {
      vrnt::detail::raiseUnfit(numbers_.type, {}, "type " + vrnt::detail::shownText(type.get()));
    }
    Value array = Value::create(type.get(), false).value();
    View(&array).write(numbers.data(), numbers.size() * sizeof(float));
    vrntValuesError_t* error = nullptr;
    vrntValueSetReference(value.address(), &numbers_, array.get(), &error);
    if (error != nullptr) vrnt::detail::raiseError(error);
    vrntValueWrite(value.address(), encoding_.offset, &encoding, sizeof(encoding), &error);
    if (error != nullptr) vrnt::detail::raiseError(error);
  }

  FieldPath path_;
  vrntValueView_t encoding_{};
  vrntValueView_t numbers_{};
};

}  // namespace vrnt::host

#endif
