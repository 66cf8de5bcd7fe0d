/// What a host in C++17 puts around the flat functions: scenes that end themselves, fields by path,
/// bytes handed over without a copy. All of it is header-only; failures are thrown as
/// vrnt::Exception or std::bad_alloc, and nothing leaks then.
///
///     using namespace vrnt;
///     host::Scene scene;
///     host::Object camera = scene.create(VRDM_CLASS_CAMERA);
///     scene.refer(camera, "program", scene.addProgram(VRDM_CLASS_CAMERA_PROGRAM, source));
///     scene.setGroup(camera, "General", scene.group(camera, "General").set("near_distance",
///     0.5F)); scene.setValue(camera, host::Record::ofType("{ float focal_length; }"));
///     scene.write("camera.vrnscene");
///
/// Every handle is ended before vrntValuesShutdown(): scenes, records, fields, types and values.
#ifndef VORNATH_DATA_HOST_HPP
#define VORNATH_DATA_HOST_HPP

#include "vornath_data/host/field.hpp"
#include "vornath_data/host/record.hpp"
#include "vornath_data/host/scene.hpp"
#include "vornath_data/host/span.hpp"
#include "vornath_data/host/storage.hpp"
#include "vornath_data/vrnt.h"

#endif
