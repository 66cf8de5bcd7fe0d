// The memory that the check takes, and the memory that it foretells.
#include <dlfcn.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "toolkit/support.hpp"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

std::atomic<std::int64_t> held{0};
std::atomic<std::int64_t> most{0};

void tookBytes(std::int64_t size) {
  const std::int64_t now = held.fetch_add(size) + size;
  std::int64_t before = most.load();
  while (now > before && !most.compare_exchange_weak(before, now)) {
  }
}
void took(void* memory) {
  if (memory != nullptr) tookBytes(static_cast<std::int64_t>(malloc_usable_size(memory)) + 16);
}
void gaveBack(void* memory) {
  if (memory != nullptr) held -= static_cast<std::int64_t>(malloc_usable_size(memory)) + 16;
}

// Memory that the library gets from the system itself. It trims what it got, and moves it.
struct Mapping {
  std::uintptr_t begin;
  std::uintptr_t end;
};
std::array<Mapping, 64> mappings{};

void tookMapping(void* place, std::size_t size) {
  for (Mapping& mapping : mappings) {
    if (mapping.begin != mapping.end) continue;
    mapping.begin = reinterpret_cast<std::uintptr_t>(place);
    mapping.end = mapping.begin + size;
    tookBytes(static_cast<std::int64_t>(size));
    return;
  }
  std::abort();  // more mappings at once than there is room for
}

// Parts of a mapping are given back at its ends only.
void gaveMappingBack(void* place, std::size_t size) {
  const auto begin = reinterpret_cast<std::uintptr_t>(place);
  for (Mapping& mapping : mappings) {
    if (begin < mapping.begin || begin >= mapping.end) continue;
    held -= static_cast<std::int64_t>(size);
    if (begin == mapping.begin) {
      mapping.begin += size;
    } else {
      mapping.end = begin;
    }
    return;
  }
}

}  // namespace

// The library is to call these functions, too.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
  void* const memory = __libc_malloc(size);
  took(memory);
  return memory;
}
void* calloc(std::size_t count, std::size_t size) {
  void* const memory = __libc_calloc(count, size);
  took(memory);
  return memory;
}
void* realloc(void* memory, std::size_t size) {
  gaveBack(memory);
  void* const larger = __libc_realloc(memory, size);
  took(larger);
  return larger;
}
void free(void* memory) {
  gaveBack(memory);
  __libc_free(memory);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  *memory = __libc_memalign(alignment, size);
  took(*memory);
  return *memory != nullptr ? 0 : 12;
}
void* memalign(std::size_t alignment, std::size_t size) {
  void* const memory = __libc_memalign(alignment, size);
  took(memory);
  return memory;
}
void* mmap(void* wish, std::size_t size, int protection, int flags, int file, off_t offset) {
  auto* const place =
      reinterpret_cast<void*>(syscall(SYS_mmap, wish, size, protection, flags, file, offset));
  if (place != MAP_FAILED && (flags & MAP_ANONYMOUS) != 0) tookMapping(place, size);
  return place;
}
int munmap(void* place, std::size_t size) {
  const long status = syscall(SYS_munmap, place, size);
  if (status == 0) gaveMappingBack(place, size);
  return static_cast<int>(status);
}
void* mremap(void* place, std::size_t formerSize, std::size_t size, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  void* const target = (flags & MREMAP_FIXED) != 0 ? va_arg(rest, void*) : nullptr;
  va_end(rest);
  auto* const moved =
      reinterpret_cast<void*>(syscall(SYS_mremap, place, formerSize, size, flags, target));
  if (moved == MAP_FAILED) return moved;
  gaveMappingBack(place, formerSize);
  if (target != nullptr) gaveMappingBack(target, size);
  tookMapping(moved, size);
  return moved;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  void* const memory = __libc_memalign(alignment, size);
  took(memory);
  return memory;
}
}
#pragma GCC visibility pop

namespace vornath_test {
namespace {

// The memory that a call takes at most, beside what was held before.
template <typename Call>
std::uint64_t memoryOf(Call&& call) {
  const std::int64_t before = held;
  most = before;
  call();
  return static_cast<std::uint64_t>(most - before);
}

// Measures the reading of a file, and compares it with what the report says.
void expectBound(const std::string& bytes, const std::string& what) {
  const ReportHandle report = check(bytes);
  ASSERT_TRUE(vrtkReportValid(report.get())) << textOf(report.get());
  const std::uint64_t bound = vrtkReportInfo(report.get())->openMemory;
  const TemporaryFolder folder;
  writeFile(folder.file("scene"), bytes);
  SceneHandle scene;
  const std::uint64_t measured =
      memoryOf([&] { scene.reset(vrdmDeserialize(folder.file("scene").c_str())); });
  ASSERT_NE(scene, nullptr) << what;
  EXPECT_LE(measured, bound) << what;
  // A bound that is far from the truth would be of no use.
  EXPECT_LE(bound, 8 * measured + (std::uint64_t{8} << 20U)) << what;
  scene.reset();

  const std::uint64_t own = memoryOf([&] {
    vrtkReport* made = nullptr;
    vrtkCheckFile(folder.file("scene").c_str(), nullptr, &made, nullptr);
    vrtkReportDestroy(made);
  });
  std::uint64_t objects = vrtkReportInfo(report.get())->valueBlocks;
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    objects += vrtkReportClass(report.get(), i).slots;
  }
  EXPECT_LE(own, (std::uint64_t{16} << 20U) + 8 * objects) << what;
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfAnEmptyScene) {
  const SceneHandle scene(vrdmCreateScene());
  expectBound(bytesOf(scene.get()), "an empty scene");
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfManyObjects) {
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    const SceneHandle scene(vrdmCreateScene());
    for (int i = 0; i < 20000; ++i) {
      switch (vrdmObjectClass(c)) {
        case VRDM_KIND_PROGRAM:
          vrdmAddProgram(scene.get(), c, i % 2 == 0 ? "short" : "a somewhat longer text");
          break;
        case VRDM_KIND_ASSET:
          addBytes(scene.get(), c, c == VRDM_CLASS_MESH ? "" : "bytes");
          break;
        default:
          vrdmCreateInstance(scene.get(), c);
          vrdmSetInstanceValue(
              scene.get(), c, i,
              vrdmHasValue(c) ? parseValue("{ a = 1; b = &2; }").get() : parseValue("1").get());
      }
      for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
        if (vrdmReferenceType(c, slot).kind >= VRDM_REFERENCE_LIST) {
          vrdmSetReference(scene.get(), c, i, slot, 3);
        }
      }
    }
    expectBound(bytesOf(scene.get()), vrdmObjectName(c));
  }
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfFreeSlots) {
  std::string bytes;
  {
    const SceneHandle scene(vrdmCreateScene());
    bytes = bytesOf(scene.get());
  }
  put<std::uint32_t>(bytes, sectionOf(VRDM_CLASS_SHAPE), 500000);
  bytes.insert(sectionOf(VRDM_CLASS_SHAPE) + 4, std::string(500000, '\0'));
  expectBound(bytes, "free slots");
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfLargeAssetsAndOfALongList) {
  const SceneHandle scene(vrdmCreateScene());
  addBytes(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, std::string(50000000, 'x'));
  for (int i = 0; i < 200; ++i) {
    addBytes(scene.get(), VRDM_CLASS_TEXTURE, std::string(70000, 'x'));
  }
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  vrdmSetReference(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0, 1000000);
  expectBound(bytesOf(scene.get()), "large assets");
}

std::string fileOfMaterials(const std::vector<std::string>& types) {
  const SceneHandle scene(vrdmCreateScene());
  for (std::size_t i = 0; i < types.size(); ++i) {
    const TypeHandle type = parseType(types[i]);
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreate(type.get(), &error));
    vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, static_cast<std::int32_t>(i),
                         value.get());
  }
  return bytesOf(scene.get());
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfValuesWithManyTypes) {
  std::vector<std::string> types;
  for (int i = 0; i < 3000; ++i) {
    types.push_back("{ float a" + std::to_string(i) + "; { int b; void* c; }[" +
                    std::to_string(i % 7 + 1) + "] s; }");
  }
  expectBound(fileOfMaterials(types), "many types");
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfOneLargeType) {
  std::string fields;
  for (int i = 0; i < 3000; ++i) fields += "int f" + std::to_string(i) + "; ";
  expectBound(fileOfMaterials({"{ " + fields + "}"}), "many fields");
  std::string nested = "int";
  for (int i = 0; i < 1000; ++i) nested = "{ " + nested + " a; }";
  expectBound(fileOfMaterials({nested}), "a nest");
  expectBound(fileOfMaterials({"int" + std::string(3000, '*')}), "references to references");
  std::string names;
  for (int i = 0; i < 3000; ++i) names += "N" + std::to_string(i) + "; ";
  expectBound(fileOfMaterials({"enum { " + names + "}"}), "an enum");
  std::string functions = "int";
  for (int i = 0; i < 500; ++i) functions = "((" + functions + ", int) => int)";
  expectBound(fileOfMaterials({functions}), "functions");
  std::string arrays = "int";
  for (int i = 0; i < 1000; ++i) arrays += "[1]";
  expectBound(fileOfMaterials({arrays}), "arrays of arrays");
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfManyBlocks) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const TypeHandle type = parseType("void*[300000]");
  const TypeHandle any = parseType("void*");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  for (std::uint64_t i = 0; i < 300000; ++i) {
    const vrntValueView_t view{any.get(), 8 * i};
    vrntValueSetReference(&value, &view, parseValue(i % 2 == 0 ? "1" : "&1").get(), &error);
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value);
  vrntValueDestroy(value);
  expectBound(bytesOf(scene.get()), "many blocks");
}

TEST(vrtkCheckFile, ForetellsTheMemoryOfAChainOfReferences) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  const TypeHandle any = parseType("void*");
  vrntValuesError_t* error = nullptr;
  ValueHandle last = parseValue("1");
  for (int i = 0; i < 99999; ++i) {
    vrntValue_t* value = vrntValueCreate(any.get(), &error);
    const vrntValueView_t view{any.get(), 0};
    vrntValueSetReference(&value, &view, last.get(), &error);
    last.reset(value);
  }
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, last.get());
  last.reset();
  expectBound(bytesOf(scene.get()), "a chain");
}

}  // namespace
}  // namespace vornath_test

#endif
