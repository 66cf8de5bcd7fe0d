#include "record.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace cornell_box {

vrntValueView_t Record::find(const std::string& path) const {
  vrntValueView_t view{vrntValueType(value_.get()), 0};
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    const std::string label = path.substr(begin, end - begin);
    const bool isStruct = vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_STRUCT ||
                          (vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_BASE &&
                           vrntTypeBasetype(view.type) == VRNT_BASETYPE_STRUCT);
    const std::uint32_t count = isStruct ? vrntTypeFieldCount(view.type) : 0;
    std::uint32_t field = 0;
    while (field < count && label != vrntTypeFieldLabel(view.type, field)) ++field;
    if (field == count) {
      throw std::runtime_error("there is no field '" + label + "' (of '" + path + "') in " +
                               vrntTypeString(view.type));
    }
    vrntValueView_t child;
    vrntValueStructField(&child, view.type, field);
    view = {child.type, view.offset + child.offset};
    begin = end + 1;
  }
  return view;
}

void Record::writeAt(const vrntValueView_t& view, const void* bytes, std::size_t size) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* handle = value_.release();  // the map may replace it
  void* const place = vrntValueMap(&handle, &view, &error);
  value_.reset(handle);
  raiseIf(error);
  std::memcpy(place, bytes, size);
  vrntValueUnmap(handle, &view);
}

void Record::write(const std::string& path, const char* type, const void* bytes, std::size_t size) {
  const vrntValueView_t view = find(path);
  if (std::strcmp(vrntTypeString(view.type), type) != 0) {
    throw std::runtime_error("the field '" + path + "' is no " + type + " but " +
                             vrntTypeString(view.type));
  }
  writeAt(view, bytes, size);
}

Record& Record::set(const std::string& path, bool value) {
  const std::int32_t word = value ? -1 : 0;  // true is all ones
  write(path, "bool", &word, sizeof word);
  return *this;
}

Record& Record::set(const std::string& path, std::int32_t value) {
  write(path, "int", &value, sizeof value);
  return *this;
}

Record& Record::set(const std::string& path, float value) {
  write(path, "float", &value, sizeof value);
  return *this;
}

Record& Record::set(const std::string& path, const Float2& value) {
  write(path, "float2", value.data(), sizeof value);
  return *this;
}

Record& Record::set(const std::string& path, const Float4& value) {
  write(path, "float4", value.data(), sizeof value);
  return *this;
}

Record& Record::setName(const std::string& path, const std::string& constructor) {
  const vrntValueView_t view = find(path);
  const bool isEnum = vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_ENUM;
  const std::uint32_t count = isEnum ? vrntTypeConstructorCount(view.type) : 0;
  for (std::uint32_t code = 0; code < count; ++code) {
    if (constructor != vrntTypeConstructorName(view.type, code)) continue;
    writeAt(view, &code, sizeof code);
    return *this;
  }
  throw std::runtime_error("the field '" + path + "' has no '" + constructor + "' in " +
                           vrntTypeString(view.type));
}

Record& Record::setText(const std::string& path, const std::string& text) {
  const vrntValueView_t view = find(path);
  const std::size_t size = vrntTypeSize(view.type);
  const std::string type = "char[" + std::to_string(size) + "]";
  if (text.size() >= size) throw std::runtime_error("'" + text + "' is too long for " + type);
  std::string bytes = text;
  bytes.resize(size, '\0');
  write(path, type.c_str(), bytes.data(), size);
  return *this;
}

Record& Record::setFlat(const std::string& path, float everywhere) {
  setName(path + ".encoding", "LUMINANCE");
  refer(path + ".spectrum", {everywhere});
  return *this;
}

// The numbers of a spectral distribution are pairs of wavelength and amplitude. The first pair is
// (0, 0), the last one closes the distribution with an amplitude of 0.
Record& Record::setSpectrum(const std::string& path, const Spectrum& spectrum) {
  std::vector<float> numbers = {0.0F, 0.0F};
  for (std::size_t i = 0; i < spectrum.wavelengths.size(); ++i) {
    numbers.push_back(spectrum.wavelengths[i]);
    numbers.push_back(spectrum.amplitudes.at(i));
  }
  numbers.push_back(spectrum.end);
  numbers.push_back(0.0F);
  setName(path + ".encoding", "SPECTRAL");
  refer(path + ".spectrum", numbers);
  return *this;
}

// The field's type is `float[]*`: a reference to an array of any length, which is a value of its
// own.
void Record::refer(const std::string& path, const std::vector<float>& numbers) {
  const Type arrayType(vrtnTypeFloatArray(numbers.size()));
  vrntValuesError_t* error = nullptr;
  Record array{Value(vrntValueCreate(arrayType.get(), &error))};
  raiseIf(error);
  array.writeAt({arrayType.get(), 0}, numbers.data(), numbers.size() * sizeof(float));

  const vrntValueView_t view = find(path);
  const Type target(vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_REFERENCE
                        ? vrntTypeReferencedType(view.type)
                        : nullptr);
  if (!target || !vrntTypeIsSubType(arrayType.get(), target.get())) {
    throw std::runtime_error("the field '" + path + "' can't refer to numbers: it is " +
                             vrntTypeString(view.type));
  }
  vrntValue_t* handle = value_.release();
  vrntValueSetReference(&handle, &view, array.value_.get(), &error);
  value_.reset(handle);
  raiseIf(error);
}

}  // namespace cornell_box
