// The digest of scenes.
#include <cryptopp/sha.h>

#include <functional>
#include <limits>
#include <set>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

std::string digestOf(const vrdmScene_t* scene, bool includeIds = false) {
  vrtkDigestOptions options = VRTK_DIGEST_OPTIONS_INIT;
  options.includeIds = includeIds ? 1 : 0;
  char hex[VRTK_DIGEST_LENGTH] = "";
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneDigest(scene, &options, hex, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  return hex;
}

SceneHandle reopened(const vrdmScene_t* scene) {
  const std::string bytes = bytesOf(scene);
  vrdmScene_t* read = nullptr;
  EXPECT_EQ(vrtkSceneOpenBytes(bytes.data(), bytes.size(), nullptr, &read, nullptr, nullptr),
            VRTK_OK);
  return SceneHandle(read);
}

std::string digestOfValue(const char* text) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const ValueHandle value = parseValue(text);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  return digestOf(scene.get());
}

TEST(vrtkSceneDigest, Is64HexadecimalDigits) {
  const std::string digest = digestOf(sceneOfAllClasses().get());
  EXPECT_EQ(digest.size(), 64U);
  EXPECT_EQ(digest.find_first_not_of("0123456789abcdef"), std::string::npos);
}

std::string sha256(const std::string& bytes) {
  std::string digest(CryptoPP::SHA256::DIGESTSIZE, '\0');
  CryptoPP::SHA256().CalculateDigest(reinterpret_cast<CryptoPP::byte*>(digest.data()),
                                     reinterpret_cast<const CryptoPP::byte*>(bytes.data()),
                                     bytes.size());
  return digest;
}

std::string hexOf(const std::string& bytes) {
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += "0123456789abcdef"[byte >> 4U];
    hex += "0123456789abcdef"[byte & 15U];
  }
  return hex;
}

template <typename T>
std::string bytesOfNumber(T number) {
  return std::string(reinterpret_cast<const char*>(&number), sizeof(number));
}

// The form of docs/scene_digest.md, put together from the file of the scene.
TEST(vrtkSceneDigest, IsTheSha256OfTheDocumentedForm) {
  const SceneHandle scene(vrdmCreateScene());
  const std::string file = bytesOf(scene.get());
  const std::string header = "vornath scene digest 1\n" + file.substr(8, 4);
  const std::string groups = file.substr(28, 320);
  const std::string none = bytesOfNumber(std::uint32_t{0});
  const std::string one = bytesOfNumber(std::uint32_t{1});
  std::string counts;
  for (std::uint32_t c = 0; c < kClasses; ++c) counts += none;
  EXPECT_EQ(digestOf(scene.get()), hexOf(sha256(header + none + groups + counts)));
  EXPECT_EQ(digestOf(scene.get(), true),
            hexOf(sha256(header + one + file.substr(12, 16) + groups + counts)));

  // A program, a material with a value, and a light group with a list, all in their classes.
  vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "light");
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const ValueHandle value = parseValue("{ a = 1c; b = &2; c = $0; }");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_LIGHT_GROUP);
  vrdmSetReference(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 1);
  const std::string two = sha256(sha256("int") + bytesOfNumber(std::int32_t{2}));
  const std::string data = std::string(1, '\1') + std::string(23, '\0');
  const std::string root =
      sha256(sha256(vrntTypeString(vrntValueType(value.get()))) + data + '\1' + two + '\0');
  std::string objects;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    switch (c) {
      case VRDM_CLASS_LIGHT_PROGRAM:
        objects += one + one + bytesOfNumber(std::uint64_t{5}) + "light";
        break;
      case VRDM_CLASS_MATERIAL: {
        objects += one + one;
        for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
          const bool isList = vrdmReferenceType(c, slot).kind >= VRDM_REFERENCE_LIST;
          objects += isList ? bytesOfNumber(std::uint64_t{0}) : bytesOfNumber(std::int32_t{-1});
        }
        ASSERT_EQ(vrdmFieldCount(c), 0U);
        objects += one + root;
        break;
      }
      case VRDM_CLASS_LIGHT_GROUP:
        objects += one + one + bytesOfNumber(std::uint64_t{1}) + bytesOfNumber(INT32_MIN);
        ASSERT_EQ(vrdmFieldCount(c), 0U);
        break;
      default:
        objects += none;
    }
  }
  EXPECT_EQ(digestOf(scene.get()), hexOf(sha256(header + none + groups + objects)));
}

TEST(vrtkSceneDigest, IsTheSameForTheSameContentInOtherMemory) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle again = sceneOfAllClasses();
  EXPECT_EQ(digestOf(scene.get()), digestOf(again.get()));
  EXPECT_EQ(digestOf(scene.get()), digestOf(reopened(scene.get()).get()));
}

TEST(vrtkSceneDigest, LeavesOutIdsUnlessTheyAreAskedFor) {
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle again = sceneOfAllClasses();
  EXPECT_NE(digestOf(scene.get(), true), digestOf(again.get(), true));
  EXPECT_EQ(digestOf(scene.get(), true), digestOf(reopened(scene.get()).get(), true));
  EXPECT_NE(digestOf(scene.get(), true), digestOf(scene.get(), false));
  // The id of an asset alone.
  const SceneHandle other = reopened(scene.get());
  ASSERT_NE(vrdmGetUniqueId(other.get(), VRDM_CLASS_MESH, 0), nullptr);
  other->container<vrnt::detail::MeshDesc>().at(0).id = vrnt::UniqueId::generate();
  EXPECT_NE(digestOf(scene.get(), true), digestOf(other.get(), true));
  EXPECT_EQ(digestOf(scene.get()), digestOf(other.get()));
}

TEST(vrtkSceneDigest, LeavesOutWhatFreeSlotsContain) {
  const SceneHandle scene(vrdmCreateScene());
  const SceneHandle other(vrdmCreateScene());
  for (const vrdmScene_t* at : {scene.get(), other.get()}) {
    auto* const owner = const_cast<vrdmScene_t*>(at);
    for (std::uint32_t c = 0; c < kClasses; ++c) {
      if (vrdmObjectClass(c) == VRDM_KIND_PROGRAM) vrdmAddProgram(owner, c, "text");
      if (vrdmObjectClass(c) == VRDM_KIND_INSTANCE) vrdmCreateInstance(owner, c);
    }
  }
  const ValueHandle value = parseValue("{ a = 1; }");
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    if (vrdmObjectClass(c) == VRDM_KIND_INSTANCE) {
      vrdmSetInstanceValue(other.get(), c, 0, value.get());
      vrdmSetReference(other.get(), c, 0, 0, 3);
    }
    if (vrdmObjectClass(c) == VRDM_KIND_ASSET) continue;
    vrdmRemove(scene.get(), c, 0);
    vrdmRemove(other.get(), c, 0);
  }
  EXPECT_EQ(digestOf(scene.get()), digestOf(other.get()));
}

TEST(vrtkSceneDigest, CountsFreeSlots) {
  const SceneHandle scene(vrdmCreateScene());
  const std::string empty = digestOf(scene.get());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
  const std::string one = digestOf(scene.get());
  vrdmRemove(scene.get(), VRDM_CLASS_DECAL, 0);
  const std::string freed = digestOf(scene.get());
  EXPECT_EQ((std::set<std::string>{empty, one, freed}).size(), 3U);
}

TEST(vrtkSceneDigest, IgnoresChangeCounters) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string before = digestOf(scene.get());
  vrdmModifyReferenceList(scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0);
  const ValueHandle group(vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, 0));
  vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, 0, group.get());
  EXPECT_EQ(digestOf(scene.get()), before);
}

// Flips each bit of the groups of each class in turn.
TEST(vrtkSceneDigest, ChangesWithEachBitOfAFieldAndWithNoBitOfPadding) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string before = digestOf(scene.get());
  for (std::uint32_t c = 0; c <= kClasses; ++c) {
    const std::uint32_t objectClass = c == kClasses ? VRDM_CLASS_SCENE_DATA : c;
    for (std::uint32_t g = 0; g < vrdmFieldCount(objectClass); ++g) {
      const bool isScene = objectClass == VRDM_CLASS_SCENE_DATA;
      const ValueHandle group(isScene ? vrdmGetSceneDataValue(scene.get(), g)
                                      : vrdmGetDataValue(scene.get(), objectClass, 0, g));
      const auto set = [&](const vrntValue_t* value) {
        return isScene ? vrdmSetSceneDataValue(scene.get(), g, value)
                       : vrdmSetDataValue(scene.get(), objectClass, 0, g, value);
      };
      const std::uint64_t size = vrntTypeSize(vrntValueType(group.get()));
      auto* const bytes = static_cast<unsigned char*>(vrntValueData(group.get()));
      std::uint64_t counted = 0;
      for (std::uint64_t i = 0; i < size; ++i) {
        bytes[i] ^= 0x10U;
        ASSERT_TRUE(set(group.get()));
        counted += digestOf(scene.get()) != before ? 1 : 0;
        bytes[i] ^= 0x10U;
      }
      ASSERT_TRUE(set(group.get()));
      // The bytes of all numbers, enums and bools of the group, as the library prints them.
      std::uint64_t padding = 0;
      for (std::uint64_t i = 0; i < size; ++i) {
        bytes[i] ^= 0x01U;
        vrntValuesError_t* error = nullptr;
        const vrntValueView_t whole{vrntValueType(group.get()), 0};
        const vrnt::UniqueString text(
            vrntValueString(group.get(), &whole, VRNT_STRING_EXACT, &error));
        bytes[i] ^= 0x01U;
        const vrnt::UniqueError owner(error);
        const vrnt::UniqueString former(
            vrntValueString(group.get(), &whole, VRNT_STRING_EXACT, &error));
        // A bool prints as true or false, and a vector without its bits.
        padding += text && former && std::string_view(text.get()) == former.get() ? 1 : 0;
      }
      EXPECT_GE(counted, size - padding) << vrdmFieldName(objectClass, g);
      EXPECT_LE(counted, size);
    }
  }
  EXPECT_EQ(digestOf(scene.get()), before);
}

TEST(vrtkSceneDigest, LeavesOutThePaddingOfVectors) {
  const SceneHandle scene = sceneOfAllClasses();
  const std::string before = digestOf(scene.get());
  // image.border_spectrum is a float3: 16 bytes, of which the last four are no content.
  constexpr std::uint32_t kBackplate = 3;
  const ValueHandle group(vrdmGetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, kBackplate));
  vrntValueView_t image{};
  vrntValueStructField(&image, vrntValueType(group.get()), 1);
  vrntValueView_t border{};
  vrntValueStructField(&border, image.type, 2);
  ASSERT_STREQ(vrntTypeString(border.type), "float3");
  auto* const bytes =
      static_cast<unsigned char*>(vrntValueData(group.get())) + image.offset + border.offset;
  bytes[12] ^= 1U;
  ASSERT_TRUE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, kBackplate, group.get()));
  EXPECT_EQ(digestOf(scene.get()), before);
  bytes[8] ^= 1U;
  ASSERT_TRUE(vrdmSetDataValue(scene.get(), VRDM_CLASS_CAMERA, 0, kBackplate, group.get()));
  EXPECT_NE(digestOf(scene.get()), before);
}

TEST(vrtkSceneDigest, ChangesWithEachPartOfAnObject) {
  const SceneHandle scene = sceneOfAllClasses();
  std::set<std::string> seen{digestOf(scene.get())};
  std::size_t changes = 1;
  const auto changed = [&](const char* what) {
    EXPECT_TRUE(seen.insert(digestOf(scene.get())).second) << what;
    ++changes;
  };
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
      const bool isList = vrdmReferenceType(c, slot).kind >= VRDM_REFERENCE_LIST;
      vrdmSetReference(scene.get(), c, 0, slot, isList ? 4 : 7);
      changed(vrdmReferenceType(c, slot).name);
      if (isList) {
        vrdmModifyReferenceList(scene.get(), c, 0, slot)[1] = 9;
        changed(vrdmReferenceType(c, slot).name);
      }
    }
  }
  const ValueHandle value = parseValue("{ a = 1; }");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value.get());
  changed("value");
  addBytes(scene.get(), VRDM_CLASS_TEXTURE, "other bytes");
  changed("asset");
  vrdmAddProgram(scene.get(), VRDM_CLASS_LIGHT_PROGRAM, "program c()");
  changed("program");
  EXPECT_EQ(seen.size(), changes);
}

TEST(vrtkSceneDigest, CountsTheTypeOfAValue) {
  EXPECT_NE(digestOfValue("{ a = 1; }"), digestOfValue("{ b = 1; }"));
  EXPECT_NE(digestOfValue("{ a = 1065353216; }"), digestOfValue("{ a = 1.0; }"));
  EXPECT_NE(digestOfValue("{ a = &1; }"), digestOfValue("{ a = &2; }"));
  EXPECT_NE(digestOfValue("{ a = &1; }"), digestOfValue("{ a = &1.0; }"));
  EXPECT_NE(digestOfValue("{ a = $0; }"), digestOfValue("{ a = &0; }"));
  EXPECT_EQ(digestOfValue("{ a = &{ b = [ &1, &2 ]; }; }"),
            digestOfValue("{ a = &{ b = [ &1, &2 ]; }; }"));
}

// The padding between the elements of a large array of structs.
TEST(vrtkSceneDigest, LeavesOutThePaddingOfLargeValues) {
  std::string text = "{ list = [ ";
  for (int i = 0; i < 1000; ++i) text += i == 0 ? "" : ", ", text += "{ a = 1c; b = 2.0; }";
  text += " ]; }";
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const ValueHandle value = parseValue(text.c_str());
  ASSERT_EQ(vrntTypeSize(vrntValueType(value.get())), 8000U);
  std::set<std::string> digests;
  auto* const bytes = static_cast<unsigned char*>(vrntValueData(value.get()));
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  digests.insert(digestOf(scene.get()));
  bytes[8 * 500 + 2] ^= 1U;  // padding
  EXPECT_FALSE(digests.insert(digestOf(scene.get())).second);
  bytes[8 * 500] ^= 1U;
  EXPECT_TRUE(digests.insert(digestOf(scene.get())).second);
  bytes[8 * 999 + 7] ^= 1U;
  EXPECT_TRUE(digests.insert(digestOf(scene.get())).second);
}

TEST(vrtkSceneDigest, IsTheSameWhetherBlocksAreSharedOrEqual) {
  const ValueHandle shared = parseValue("{ a = 1.5; }");
  const auto make = [&](bool isShared) {
    ValueHandle value = parseValue("{ p = $( 0 : void* ); q = $( 0 : void* ); }");
    const ValueHandle other = parseValue("{ a = 1.5; }");
    for (std::uint32_t i = 0; i < 2; ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, vrntValueType(value.get()), i);
      vrntValuesError_t* error = nullptr;
      vrntValue_t* handle = value.release();
      vrntValueSetReference(&handle, &field, i == 0 || isShared ? shared.get() : other.get(),
                            &error);
      value.reset(handle);
    }
    const SceneHandle scene(vrdmCreateScene());
    vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
    return digestOf(scene.get());
  };
  EXPECT_EQ(make(true), make(false));
}

// A chain in which each block refers to the next one twice has 2^60 paths.
TEST(vrtkSceneDigest, ReadsEachBlockOnceAndNeedsNoStack) {
  ValueHandle value = parseValue("1");
  for (int i = 0; i < 50000; ++i) {
    ValueHandle next = parseValue("{ p = $( 0 : void* ); q = $( 0 : void* ); }");
    for (std::uint32_t f = 0; f < 2; ++f) {
      vrntValueView_t field{};
      vrntValueStructField(&field, vrntValueType(next.get()), f);
      vrntValuesError_t* error = nullptr;
      vrntValue_t* handle = next.release();
      vrntValueSetReference(&handle, &field, value.get(), &error);
      next.reset(handle);
    }
    value = std::move(next);
  }
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  EXPECT_EQ(digestOf(scene.get()), digestOf(scene.get()));
}

TEST(vrtkSceneDigest, TakesAnObjectWithoutItsValue) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const std::string without = digestOf(scene.get());
  const ValueHandle value = parseValue("0");
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  EXPECT_NE(digestOf(scene.get()), without);
}

TEST(vrtkSceneDigest, TellsACycleOfReferences) {
  ValueHandle value = parseValue("{ p = $( 0 : void* ); }");
  vrntValueView_t field{};
  vrntValueStructField(&field, vrntValueType(value.get()), 0);
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  // No call makes a cycle: write the word itself.
  auto* const word = static_cast<void**>(vrntValueData(value.get()));
  *word = vrntValueData(value.get());
  char hex[VRTK_DIGEST_LENGTH] = "unchanged";
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneDigest(scene.get(), nullptr, hex, &error), VRTK_VALUE_CYCLE);
  const ToolkitError owner(error);
  EXPECT_STREQ(hex, "unchanged");
  *word = nullptr;
}

TEST(vrtkSceneDigest, RefusesNull) {
  char hex[VRTK_DIGEST_LENGTH] = "";
  EXPECT_EQ(vrtkSceneDigest(nullptr, nullptr, hex, nullptr), VRTK_INVALID_ARGUMENT);
  const SceneHandle scene(vrdmCreateScene());
  EXPECT_EQ(vrtkSceneDigest(scene.get(), nullptr, nullptr, nullptr), VRTK_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace vornath_test
