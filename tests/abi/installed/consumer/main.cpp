// A host in C++17 that has nothing but the installed library: it uses the flat functions and the
// exported classes, and catches what the library throws.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <sstream>
#include <string>
#include <vector>

#include "vornath_data/host.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/value.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

int failures = 0;

void check(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "not true: %s\n", what);
  ++failures;
}

// PACKAGE_VERSION is what CMake or pkg-config tells.
void version() {
  int major = -1, minor = -1, patch = -1;
  check(std::sscanf(PACKAGE_VERSION, "%d.%d.%d", &major, &minor, &patch) == 3, "three numbers");
  check(std::strcmp(VORNATH_DATA_VERSION_STRING, PACKAGE_VERSION) == 0, "the version's text");
  check(VORNATH_DATA_VERSION_MAJOR == major && VORNATH_DATA_VERSION_MINOR == minor &&
            VORNATH_DATA_VERSION_PATCH == patch,
        "the version's numbers");
#if VORNATH_DATA_VERSION < VORNATH_DATA_VERSION_NUMBER(1, 0, 0) || \
    VORNATH_DATA_VERSION >= VORNATH_DATA_VERSION_NUMBER(VORNATH_DATA_VERSION_MAJOR + 1, 0, 0)
  check(false, "the version's number lies among the others");
#endif
}

void identifiers() {
  std::ostringstream text;
  text << vrnt::UniqueId::hash("abc");
  check(text.str() == "8275618601ff911fb1d3bbaae5a9276d", "the digest of abc");
  check(!vrnt::UniqueId::parse("too short").hasValue(), "a short identifier doesn't parse");
  try {
    static_cast<void>(vrnt::UniqueId::parse("").value());
    check(false, "reading the value of a failure throws");
  } catch (const vrnt::Exception& caught) {
    check(caught.code() == vrnt::ErrorCode::ParseFailed, "the code of the failure");
  }
}

void types() {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrntTypeParse("enum { A; B; }", &error);
  check(type != nullptr && error == nullptr, "an enum parses");
  try {
    vrntTypeFieldType(type, 0);
    check(false, "an accessor refuses a type of the wrong kind");
  } catch (const VornathValuesAssertionFailure& caught) {
    check(std::strcmp(caught.what(),
                      "vrntTypeFieldType: takes a struct or a function, was given the enum { A; "
                      "B; }") == 0,
          "the words for a type of the wrong kind");
  }
  vrntTypeDestroy(type);

  try {
    vrtnTypeFloatArray(0x80000000U);
    check(false, "a negative count throws");
  } catch (const vrnt::Exception& caught) {
    check(std::strcmp(caught.what(), "negative array length") == 0, "the words of the exception");
  }
}

void values() {
  const vrnt::TypeHandle type =
      vrnt::TypeHandle::parse("{ int a; float3 @default=float3(1.0, 2.0, 3.0) b; }").value();
  vrnt::Value value = vrnt::Value::create(type.get(), true).value();
  const vrnt::Value before = value;
  const vrnt::BasicView<vrnt::Value*> view(&value);
  view.field("a").write(std::int32_t{7});
  check(view.field("a").read<std::int32_t>() == 7, "a field reads as it was written");
  check(view.field("b").text() == "float3(1.0, 2.0, 3.0)", "the text of a default");
  check(value.get() != before.get(), "a shared value is copied by the first write");
  try {
    static_cast<void>(view.field("c"));
    check(false, "a field that isn't there");
  } catch (const vrnt::Exception& caught) {
    check(std::strcmp(caught.what(), "Field not found in struct: c.") == 0, "the missing field");
  }
}

void textures() {
  check(vrnt::parseTextureFormat("SRGB8") == 2, "the number of SRGB8");
  vrnt::detail::TextureDesc desc;
  desc.width = desc.height = 4;
  desc.depth = 1;
  desc.format = vrnt::TextureFormat::RGBA32;
  check(desc.size() == 256, "the size of a texture");
}

void scenes() {
  vrdmScene_t* scene = vrdmCreateScene();
  check(vrdmAddProgram(scene, VRDM_CLASS_LIGHT_PROGRAM, "light { }") == 0, "the first program");
  std::stringstream stream;
  vrnt::data::Scene::serialize(*scene, stream);
  auto read = vrnt::data::Scene::deserialize(stream, vrnt::UniqueId::null());
  check(read.hasValue(), "a scene that was written is read");
  if (read.hasValue()) {
    check(std::strcmp(vrdmGetProgramSource(&*read, VRDM_CLASS_LIGHT_PROGRAM, 0), "light { }") == 0,
          "the program's text");
    check(*vrdmSceneId(&*read) == *vrdmSceneId(scene), "the scene's id");
  }
  vrdmDestroyScene(scene);

  std::istringstream empty;
  const auto nothing = vrnt::data::Scene::deserialize(empty, vrnt::UniqueId::null());
  check(!nothing.hasValue() && nothing.error().code() == vrnt::ErrorCode::IoError,
        "an empty stream is no scene");
}

void hosts() {
  vrnt::host::Scene scene;
  const vrnt::host::Object light = scene.create(VRDM_CLASS_LIGHT);
  const vrnt::host::Object program = scene.addProgram(VRDM_CLASS_LIGHT_PROGRAM, "light { }");
  scene.refer(light, "program", program);
  scene.setGroup(light, "Target", scene.group(light, "Target").set("tag", "lamp"));
  check(scene.group(light, "Target").get<std::string>("tag") == "lamp", "the text of a field");
  const vrdmMaterialGraphDesc desc{3, 0, 0};
  const vrnt::host::Object graph =
      scene.addAsset(desc, vrnt::host::moveBytes(std::vector<char>{'a', 'b', 'c'}));
  check(scene.bytes(graph).size() == 3 && scene.bytes(graph)[2] == 'c', "the bytes of an asset");
  try {
    scene.write("nowhere.vrnscene");
    check(false, "a light without a value isn't written");
  } catch (const vrnt::Exception& caught) {
    check(std::strcmp(caught.what(), "Light 0 has no value.") == 0, "the missing value");
  }
}

}  // namespace

int main() {
  try {
    version();
    identifiers();
    types();
    values();
    textures();
    scenes();
    hosts();
  } catch (const std::exception& caught) {
    std::fprintf(stderr, "not caught where it should be: %s\n", caught.what());
    ++failures;
  }
  vrntValuesShutdown();
  return failures == 0 ? 0 : 1;
}
