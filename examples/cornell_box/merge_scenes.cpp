// Merges scenes by the exported C++ class, because the flat functions cannot import.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "run_host.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace cornell_box {
namespace {

using DataScene = vrnt::data::Scene;

DataScene readDataScene(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": the file can't be opened");
  vrnt::Result<DataScene> scene = DataScene::deserialize(file, vrnt::UniqueId());
  if (!scene)
    throw std::runtime_error(path + ": " +
                             vrnt::Exception(vrnt::ErrorRecord(scene.error())).what());
  return std::move(scene).value();
}

void writeDataScene(const DataScene& scene, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  DataScene::serialize(scene, file);
  file.close();
  if (!file) throw std::runtime_error(path + ": the file can't be written");
}

// Prints, for each class, how many objects were imported and the new index of the first.
void report(const std::string& path,
            const vrnt::data::detail::TupleOfClass<vrnt::data::RefMap>& maps) {
  std::cout << path << '\n';
  std::uint32_t objectClass = 0;
  vrnt::data::forEachClass([&](auto tag) {
    const auto& pairs = maps.template get<typename decltype(tag)::Desc>().pairs();
    const char* const name = vrdmObjectName(objectClass++);
    if (pairs.empty()) return;
    std::cout << "  " << pairs.size() << ' ' << name << ", the first at " << pairs.front().second
              << '\n';
  });
}

constexpr char kUsage[] =
    "usage: merge_scenes [--empty] [--dump] OUT SCENE...\n"
    "\n"
    "Reads the first scene, imports the others into it in order, and writes OUT. Prints, for each\n"
    "class, how many objects were imported and the new index of the first.\n"
    "\n"
    "  --empty  start with an empty scene and import the first file, too\n"
    "  --dump   print the whole merged scene as text\n";

int run(const std::vector<std::string>& arguments) {
  bool startsEmpty = false;
  bool dumps = false;
  std::vector<std::string> files;
  for (const std::string& argument : arguments) {
    if (argument == "--help") {
      std::cout << kUsage;
      return 0;
    }
    if (argument == "--empty") {
      startsEmpty = true;
    } else if (argument == "--dump") {
      dumps = true;
    } else {
      files.push_back(argument);
    }
  }
  if (files.size() < 2 || files[0].rfind("--", 0) == 0) {
    std::cerr << kUsage;
    return 2;
  }
  DataScene target = startsEmpty ? DataScene() : readDataScene(files[1]);
  for (std::size_t i = startsEmpty ? 1 : 2; i < files.size(); ++i) {
    report(files[i], target.import(readDataScene(files[i])));
  }
  writeDataScene(target, files[0]);
  if (dumps) std::cout << target;
  std::cout.flush();
  if (!std::cout) throw std::runtime_error("cannot write the output");
  return 0;
}

}  // namespace
}  // namespace cornell_box

int main(int count, char** arguments) {
  return cornell_box::runHost("merge_scenes", count, arguments, cornell_box::run);
}
