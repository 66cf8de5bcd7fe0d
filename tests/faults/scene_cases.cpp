// The catalogue, scenes and their files by the flat functions.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "all_classes.hpp"
#include "fault_table.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {
namespace {

using vrnt::data::Scene;

using SharedScene = std::shared_ptr<vrdmScene_t>;

SharedScene emptyScene() { return SceneHandle(vrdmCreateScene()); }
SharedScene filledScene() {
  SharedScene scene = emptyScene();
  fillAllClasses(scene.get());
  return scene;
}

FaultCase quietScene(const char* function, std::function<bool(vrdmScene_t*)> check) {
  return quiet(function, [check = std::move(check)] {
    return [scene = filledScene(), check] { return check(scene.get()); };
  });
}

void addCatalogue(FaultCases& cases) {
  cases.push_back(
      quiet("vrdmObjectTypeCount", [] { return [] { return vrdmObjectTypeCount() == 18; }; }));
  cases.push_back(quiet("vrdmObjectClass", [] {
    return [] { return vrdmObjectClass(VRDM_CLASS_CAMERA) == VRDM_KIND_INSTANCE; };
  }));
  cases.push_back(quiet("vrdmObjectName", [] {
    return [] { return std::strcmp(vrdmObjectName(VRDM_CLASS_CAMERA), "Camera") == 0; };
  }));
  cases.push_back(quiet("vrdmFieldCount",
                        [] { return [] { return vrdmFieldCount(VRDM_CLASS_SCENE_DATA) == 4; }; }));
  cases.push_back(quiet("vrdmFieldName", [] {
    return [] { return std::strcmp(vrdmFieldName(VRDM_CLASS_SCENE_DATA, 3), "General") == 0; };
  }));
  cases.push_back(quiet("vrdmReferenceCount", [] {
    return [] { return vrdmReferenceCount(VRDM_CLASS_KEYFRAME) == 0; };
  }));
  cases.push_back(quiet("vrdmReferenceType", [] {
    return
        [] { return vrdmReferenceType(VRDM_CLASS_LIGHT_GROUP, 0).kind == VRDM_REFERENCE_EMITTER; };
  }));
  cases.push_back(
      quiet("vrdmHasValue", [] { return [] { return vrdmHasValue(VRDM_CLASS_LIGHT); }; }));
  // The types of groups are made by the first call that needs one, so that each case here has one
  // that no other case touches.
  cases.push_back({"vrdmFieldType", "first", Promise::BadAlloc,
                   [] {
                     return making<TypeHandle>(
                         [](vrntValuesError_t**) { return vrdmFieldType(VRDM_CLASS_BAKE_TASK, 0); },
                         [](vrntType_t* type) {
                           EXPECT_STREQ(vrntMetadataString(type, "name"),
                                        vrdmFieldName(VRDM_CLASS_BAKE_TASK, 0));
                         });
                   },
                   Allocations::FirstCall});
}

// A group's value, whose type the setting of a group is the first to need.
Call setting(const SharedScene& scene, std::function<bool(vrdmScene_t*, const vrntValue_t*)> set) {
  const auto stored = std::make_shared<bool>();
  Call call;
  call.make = [scene, set = std::move(set), stored,
               other = sharedValue("{ q = 1; }")](vrntValuesError_t**) {
    *stored = set(scene.get(), other.get());
    return true;
  };
  call.right = [stored] { EXPECT_FALSE(*stored) << "a value of another type"; };
  return call;
}

void addGroups(FaultCases& cases) {
  cases.push_back({"vrdmGetSceneDataValue", "first", Promise::BadAlloc, [] {
                     return making<ValueHandle>(
                         [scene = emptyScene()](vrntValuesError_t**) {
                           return vrdmGetSceneDataValue(scene.get(), 3);
                         },
                         [](vrntValue_t* value) {
                           EXPECT_NE(textOf(value).find("infinite_ground = false"),
                                     std::string::npos);
                         });
                   }});
  cases.push_back({"vrdmSetSceneDataValue", "first", Promise::BadAlloc,
                   [] {
                     const SharedScene scene = emptyScene();
                     const auto before = scene->versions.version;
                     Call call = setting(scene, [](vrdmScene_t* to, const vrntValue_t* value) {
                       return vrdmSetSceneDataValue(to, 2, value);
                     });
                     call.intact = [=] { EXPECT_EQ(scene->versions.version, before); };
                     return call;
                   },
                   Allocations::FirstCall});
  cases.push_back({"vrdmGetDataValue", "first", Promise::BadAlloc, [] {
                     const SharedScene scene = emptyScene();
                     vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
                     return making<ValueHandle>(
                         [scene](vrntValuesError_t**) {
                           return vrdmGetDataValue(scene.get(), VRDM_CLASS_DECAL, 0, 0);
                         },
                         [](vrntValue_t* value) { EXPECT_EQ(value->refCount, 1u); });
                   }});
  cases.push_back(
      {"vrdmSetDataValue", "first", Promise::BadAlloc,
       [] {
         const SharedScene scene = emptyScene();
         vrdmCreateInstance(scene.get(), VRDM_CLASS_IMAGE_TASK);
         Call call = setting(scene, [](vrdmScene_t* to, const vrntValue_t* value) {
           return vrdmSetDataValue(to, VRDM_CLASS_IMAGE_TASK, 0, 0, value);
         });
         const std::uint32_t before = scene->container<vrnt::data::ImageTaskDesc>().at(0).version;
         call.intact = [=] {
           EXPECT_EQ(scene->container<vrnt::data::ImageTaskDesc>().at(0).version, before);
         };
         return call;
       },
       Allocations::FirstCall});
  for (const bool ofScene : {true, false}) {
    cases.push_back(quiet(ofScene ? "vrdmSetSceneDataValue" : "vrdmSetDataValue", [ofScene] {
      const SharedScene scene = emptyScene();
      vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
      const SharedValue value =
          ValueHandle(ofScene ? vrdmGetSceneDataValue(scene.get(), 1)
                              : vrdmGetDataValue(scene.get(), VRDM_CLASS_DECAL, 0, 1));
      EXPECT_NE(value, nullptr);
      return [=] {
        return ofScene ? vrdmSetSceneDataValue(scene.get(), 1, value.get())
                       : vrdmSetDataValue(scene.get(), VRDM_CLASS_DECAL, 0, 1, value.get());
      };
    }));
  }
}

void addReading(FaultCases& cases) {
  cases.push_back(
      quietScene("vrdmSceneId", [](vrdmScene_t* scene) { return !vrdmSceneId(scene)->isNull(); }));
  cases.push_back(quietScene("vrdmContainerSize", [](vrdmScene_t* scene) {
    return vrdmContainerSize(scene, VRDM_CLASS_SHAPE) == 2;
  }));
  cases.push_back(quietScene("vrdmValid", [](vrdmScene_t* scene) {
    return vrdmValid(scene, VRDM_CLASS_SHAPE, 0) && !vrdmValid(scene, VRDM_CLASS_SHAPE, 1);
  }));
  cases.push_back(quietScene("vrdmGetUniqueId", [](vrdmScene_t* scene) {
    return !vrdmGetUniqueId(scene, VRDM_CLASS_MESH, 0)->isNull();
  }));
  cases.push_back(quietScene("vrdmGetProgramSource", [](vrdmScene_t* scene) {
    return std::strcmp(vrdmGetProgramSource(scene, 0, 0), "program a()") == 0;
  }));
  cases.push_back(quietScene("vrdmGetAssetStorage", [](vrdmScene_t* scene) {
    std::int32_t desc[5];
    return (*vrdmGetAssetStorage(scene, VRDM_CLASS_TEXTURE, 0, desc))->size == 17 && desc[0] == 17;
  }));
  cases.push_back(quietScene("vrdmGetInstanceValue", [](vrdmScene_t* scene) {
    vrntValue_t* const value = vrdmGetInstanceValue(scene, VRDM_CLASS_LIGHT, 0);
    const bool right = value->refCount == 2;
    vrntValueDestroy(value);
    return right;
  }));
  cases.push_back(quietScene("vrdmGetReference", [](vrdmScene_t* scene) {
    return vrdmGetReference(scene, VRDM_CLASS_LIGHT, 0, 0) == 0;
  }));
  cases.push_back(quietScene("vrdmGetReferenceCount", [](vrdmScene_t* scene) {
    return vrdmGetReferenceCount(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0) == 3;
  }));
  cases.push_back(quietScene("vrdmGetReferenceList", [](vrdmScene_t* scene) {
    return vrdmGetReferenceList(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0)[1] == 1;
  }));
  cases.push_back(quietScene("vrdmModifyReferenceList", [](vrdmScene_t* scene) {
    return vrdmModifyReferenceList(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0)[1] == 1;
  }));
  cases.push_back(quiet("vrdmSetInstanceValue", [] {
    return [scene = filledScene(), value = sharedValue("{ a = &[ 1 ]; }")] {
      return vrdmSetInstanceValue(scene.get(), VRDM_CLASS_LIGHT, 0, value.get()) &&
             value->refCount == 2;
    };
  }));
  cases.push_back(quiet("vrdmDestroyScene", [] {
    auto scenes = std::make_shared<std::vector<SharedScene>>();
    for (int i = 0; i < 2; ++i) scenes->push_back(filledScene());
    return [scenes] {
      scenes->pop_back();
      return true;
    };
  }));
  for (const auto& [function, call] : {Named{"vrdmSetReference", vrdmSetReference},
                                       Named{"vrdmSetReferenceCount", vrdmSetReferenceCount}}) {
    cases.push_back(quietScene(function, [call = call](vrdmScene_t* scene) {
      return call(scene, VRDM_CLASS_LIGHT, 0, 0, 0) && call(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, 2);
    }));
  }
}

// A call on a scene that is as it was if it fails, counters and slots that are left free apart.
Call on(std::function<SharedScene()> make, std::function<bool(vrdmScene_t*)> work,
        std::function<void(vrdmScene_t*)> right, std::function<void(vrdmScene_t*)> intact) {
  const auto scene = std::make_shared<SharedScene>();
  Call call;
  call.before = [=] { *scene = make(); };
  call.make = [=](vrntValuesError_t**) { return work(scene->get()); };
  call.right = [=] {
    right(scene->get());
    scene->reset();
  };
  // Whatever could not be done the first time can be done now.
  call.intact = [=] {
    intact(scene->get());
    EXPECT_TRUE(work(scene->get()));
    right(scene->get());
    scene->reset();
  };
  return call;
}

// What a scene keeps so that it need not look for it, it looks for where there is no memory.
void addKeeping(FaultCases& cases) {
  const auto never = [](vrdmScene_t*) { ADD_FAILURE(); };
  cases.push_back({"vrdmCountReferences", "first", Promise::NeverFails, [never] {
                     return on([] { return filledScene(); },
                               [](vrdmScene_t* scene) {
                                 return vrdmCountReferences(scene, VRDM_CLASS_TEXTURE, 0) > 0;
                               },
                               [](vrdmScene_t*) {}, never);
                   }});
  cases.push_back(quiet("vrdmCountReferences", [] {
    const SharedScene scene = filledScene();
    const std::uint32_t count = vrdmCountReferences(scene.get(), VRDM_CLASS_TEXTURE, 0);
    return [=] { return vrdmCountReferences(scene.get(), VRDM_CLASS_TEXTURE, 0) == count; };
  }));
  for (const bool counted : {false, true}) {
    cases.push_back(
        {"vrdmRemove", counted ? "counted" : "first", Promise::NeverFails, [counted, never] {
           return on(
               [counted] {
                 SharedScene scene = emptyScene();
                 fillAllClasses(scene.get(), false);
                 for (std::uint32_t c = 0; counted && c < kClasses; ++c) {
                   vrdmCountReferences(scene.get(), c, 0);
                 }
                 return scene;
               },
               [](vrdmScene_t* scene) {
                 bool removed = true;
                 for (std::uint32_t c = 0; c < kClasses; ++c) {
                   removed = vrdmRemove(scene, c, 0) && removed;
                 }
                 return removed && !vrdmRemove(scene, kClasses, 0);
               },
               [](vrdmScene_t* scene) {
                 for (std::uint32_t c = 0; c < kClasses; ++c) {
                   EXPECT_FALSE(vrdmValid(scene, c, 0));
                 }
                 EXPECT_EQ(vrdmAddProgram(scene, 0, "program c()"), 0U);
                 EXPECT_EQ(vrdmAddProgram(scene, 0, "program c()"), 2U);
                 // The second objects refer on.
                 EXPECT_EQ(vrdmCountReferences(scene, VRDM_CLASS_CAMERA_PROGRAM, 0), 1U);
                 EXPECT_EQ(vrdmCountReferences(scene, VRDM_CLASS_DECAL_LIST, 0), 1U);
               },
               never);
         }});
  }
  // What it can't keep of a change, it reads at the next count.
  const auto kept = [&](const char* function, std::function<bool(vrdmScene_t*)> change) {
    cases.push_back({function, "counted", Promise::NeverFails, [change = std::move(change), never] {
                       return on(
                           [] {
                             SharedScene scene = filledScene();
                             vrdmSetReferenceCount(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0, 3);
                             vrdmCreateInstance(scene.get(), VRDM_CLASS_BAKE_TASK);
                             vrdmSetReferenceCount(scene.get(), VRDM_CLASS_BAKE_TASK, 0, 0, 2);
                             vrdmCountReferences(scene.get(), VRDM_CLASS_SHAPE, 0);
                             vrdmCountReferences(scene.get(), VRDM_CLASS_MATERIAL, 0);
                             return scene;
                           },
                           change,
                           [](vrdmScene_t* scene) {
                             EXPECT_EQ(vrdmCountReferences(scene, VRDM_CLASS_SHAPE, 7777), 1U);
                             EXPECT_EQ(vrdmCountReferences(scene, VRDM_CLASS_MATERIAL, 7777), 1U);
                           },
                           never);
                     }});
  };
  kept("vrdmModifyReferenceList", [](vrdmScene_t* scene) {
    vrdmModifyReferenceList(scene, VRDM_CLASS_BAKE_TASK, 0, 0)[1] = 7777;
    return vrdmSetReference(scene, VRDM_CLASS_SHAPE, 0, 0, 7777);
  });
  kept("vrdmSetReference", [](vrdmScene_t* scene) {
    const bool set = vrdmSetReference(scene, VRDM_CLASS_SHAPE, 0, 0, 7777);
    vrdmModifyReferenceList(scene, VRDM_CLASS_BAKE_TASK, 0, 0)[1] = 7777;
    return set;
  });
}

void addAdding(FaultCases& cases) {
  struct Adding {
    const char* function;
    std::uint32_t objectClass;
    std::uint32_t (*add)(vrdmScene_t*);
  };
  static const StorageHandle owner(vrdmAssetStorageCopy("bytes", 5));
  static AssetStorage* const storage = owner.get();
  for (const Adding adding :
       {Adding{"vrdmAddProgram", VRDM_CLASS_LIGHT_PROGRAM,
               [](vrdmScene_t* scene) {
                 return vrdmAddProgram(scene, VRDM_CLASS_LIGHT_PROGRAM, "program");
               }},
        Adding{"vrdmAddAsset", VRDM_CLASS_MATERIAL_GRAPH,
               [](vrdmScene_t* scene) {
                 const std::uint64_t desc[3]{5, 0, 0};
                 return vrdmAddAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, desc, &storage);
               }},
        Adding{"vrdmCreateInstance", VRDM_CLASS_SHAPE,
               [](vrdmScene_t* scene) { return vrdmCreateInstance(scene, VRDM_CLASS_SHAPE); }}}) {
    const auto objectClass = adding.objectClass;
    cases.push_back({adding.function, "", Promise::BadAlloc, [=] {
                       return on(
                           [=] {
                             const SharedScene scene = emptyScene();
                             EXPECT_EQ(adding.add(scene.get()), 0u);
                             return scene;
                           },
                           [=](vrdmScene_t* scene) { return adding.add(scene) == 1; },
                           [=](vrdmScene_t* scene) {
                             EXPECT_TRUE(vrdmValid(scene, objectClass, 0));
                             EXPECT_TRUE(vrdmValid(scene, objectClass, 1));
                           },
                           [=](vrdmScene_t* scene) {
                             EXPECT_TRUE(vrdmValid(scene, objectClass, 0));
                             EXPECT_FALSE(vrdmValid(scene, objectClass, 1));
                             EXPECT_EQ(storage->references,
                                       objectClass == VRDM_CLASS_MATERIAL_GRAPH ? 2u : 1u);
                           });
                     }});
  }
  cases.push_back({"vrdmUpdateAsset", "", Promise::BadAlloc, [] {
                     const auto asset = [](vrdmScene_t* scene) {
                       std::uint64_t desc[3];
                       const AssetStorage* const held =
                           *vrdmGetAssetStorage(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, desc);
                       EXPECT_EQ(desc[0], held->size);
                       return std::string(static_cast<const char*>(held->data), held->size);
                     };
                     return on(
                         [] { return filledScene(); },
                         [](vrdmScene_t* scene) {
                           const std::uint64_t desc[3]{3, 0, 0};
                           return vrdmUpdateAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, desc, "new");
                         },
                         [=](vrdmScene_t* scene) { EXPECT_EQ(asset(scene), "new"); },
                         [=](vrdmScene_t* scene) { EXPECT_EQ(asset(scene), "bytes of an asset"); });
                   }});
  for (const auto& [function, call] : {Named{"vrdmSetReference", vrdmSetReference},
                                       Named{"vrdmSetReferenceCount", vrdmSetReferenceCount}}) {
    cases.push_back({function, "longer", Promise::BadAlloc, [call = call] {
                       const auto list = [](vrdmScene_t* scene, std::int32_t count) {
                         ASSERT_EQ(vrdmGetReferenceCount(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0),
                                   count);
                         const std::int32_t* const words =
                             vrdmGetReferenceList(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0);
                         for (std::int32_t i = 0; i < count; ++i) {
                           EXPECT_EQ(words[i], i < 3 ? i % 2 : INT32_MIN);
                         }
                       };
                       return on([] { return filledScene(); },
                                 [call](vrdmScene_t* scene) {
                                   return call(scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, 300);
                                 },
                                 [=](vrdmScene_t* scene) { list(scene, 300); },
                                 [=](vrdmScene_t* scene) { list(scene, 3); });
                     }});
  }
  cases.push_back({"vrdmUpdateTextureReferences", "", Promise::BadAlloc, [] {
                     const auto textures = [](const vrdmScene_t* scene) {
                       const std::uint32_t slots = vrdmReferenceCount(VRDM_CLASS_MATERIAL);
                       for (std::uint32_t slot = 0; slot < slots; ++slot) {
                         const auto info = vrdmReferenceType(VRDM_CLASS_MATERIAL, slot);
                         if (info.kind == VRDM_REFERENCE_LIST &&
                             info.targetClass == VRDM_CLASS_TEXTURE) {
                           return vrdmGetReferenceCount(scene, VRDM_CLASS_MATERIAL, 0, slot);
                         }
                       }
                       return -1;
                     };
                     return on([] { return filledScene(); },
                               [](vrdmScene_t* scene) {
                                 vrdmUpdateTextureReferences(scene, VRDM_CLASS_MATERIAL, 0);
                                 return true;
                               },
                               [=](vrdmScene_t* scene) { EXPECT_EQ(textures(scene), 1); },
                               [=](vrdmScene_t* scene) { EXPECT_EQ(textures(scene), 3); });
                   }});
}

// A file of this process, gone with the last test that names it.
std::string filePath() {
  return (std::filesystem::temp_directory_path() /
          ("vornath_faults_" + std::to_string(static_cast<long>(getpid())) + ".vrnscene"))
      .string();
}
struct File {
  std::string path = filePath();
  ~File() { std::remove(path.c_str()); }
};

void addWhole(FaultCases& cases) {
  cases.push_back({"vrdmCreateScene", "", Promise::Failure, [] {
                     return making<SceneHandle>(
                         [](vrntValuesError_t**) { return vrdmCreateScene(); },
                         [](vrdmScene_t* scene) { EXPECT_FALSE(vrdmSceneId(scene)->isNull()); });
                   }});
  // Where the system can't open a file for want of memory, the call returns as for any file that
  // can't be opened.
  cases.push_back({"vrdmSerialize", "", Promise::FailureOrRaise, [] {
                     const auto file = std::make_shared<File>();
                     const SharedScene scene = filledScene();
                     const std::string before = dumpOf(*scene);
                     Call call;
                     call.before = [file] { std::remove(file->path.c_str()); };
                     call.make = [=](vrntValuesError_t**) {
                       vrdmSerialize(scene.get(), file->path.c_str());
                       return std::filesystem::exists(file->path);
                     };
                     call.right = [=] {
                       const SceneHandle read(vrdmDeserialize(file->path.c_str()));
                       ASSERT_NE(read, nullptr);
                       EXPECT_TRUE(Scene::equivalent(*scene, *read));
                     };
                     call.intact = [=] { EXPECT_EQ(dumpOf(*scene), before); };
                     return call;
                   }});
  cases.push_back(
      {"vrdmDeserialize", "", Promise::FailureOrRaise, [] {
         const auto file = std::make_shared<File>();
         const SharedScene written = filledScene();
         vrdmSerialize(written.get(), file->path.c_str());
         return making<SceneHandle>(
             [file](vrntValuesError_t**) { return vrdmDeserialize(file->path.c_str()); },
             [written](vrdmScene_t* read) { EXPECT_TRUE(Scene::equivalent(*written, *read)); });
       }});
}

}  // namespace

void addSceneCases(FaultCases& cases) {
  addCatalogue(cases);
  addGroups(cases);
  addReading(cases);
  addKeeping(cases);
  addAdding(cases);
  addWhole(cases);
}

}  // namespace vornath_test
