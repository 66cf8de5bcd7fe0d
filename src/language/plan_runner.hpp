/// Runs the steps of a plan: builds the type or the value of a text.
#ifndef VORNATH_LANGUAGE_PLAN_RUNNER_HPP
#define VORNATH_LANGUAGE_PLAN_RUNNER_HPP

#include <string>

#include "language/build_plan.hpp"
#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Each builds what the plan of the text describes. Throws, at the same step as the actions of the
/// grammar, what the construction of types and values throws. Does not recurse.
TypePtr buildType(const BuildPlan& plan, const std::string& text);
DynamicValue buildValue(const BuildPlan& plan, const std::string& text);

}  // namespace qex::vornath

#endif
