#include "tools/zemctl/camera/required_unit.h"

#include <algorithm>

#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

ResultText DescribeAbsentUnit(const std::string& name, const std::string& resultName) {
  return {resultName, "the camera has no " + name + " extension unit",
          "\"zemctl info\" tells which units it has.", kUnitAbsent};
}

void RequireUnit(const Session& session, const std::string& name) {
  const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(),
                                        [&](const NamedUnit& each) { return each.name == name; });
  session.Call(
      "ZEMAPI_UvcCheckXuGuid",
      [unit](void* device) { return ZEMAPI_UvcCheckXuGuid(device, &unit->id); },
      [&name](ZemResult present) -> std::optional<ResultText> {
        if (present <= 0) {
          return std::nullopt;
        }
        return DescribeAbsentUnit(name, "unit absent");
      });
}

}  // namespace zemctl
