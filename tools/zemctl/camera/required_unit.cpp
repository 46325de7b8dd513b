#include "tools/zemctl/camera/required_unit.h"

#include <algorithm>

#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

void RequireUnit(const Session& session, const std::string& name) {
  const auto* const unit = std::find_if(kUnits.begin(), kUnits.end(),
                                        [&](const NamedUnit& each) { return each.name == name; });
  const ZemResult present = ZEMAPI_UvcCheckXuGuid(session.handle(), &unit->id);
  Check("ZEMAPI_UvcCheckXuGuid", present);
  if (present != ZEM_OK) {
    throw CallFailure("ZEMAPI_UvcCheckXuGuid", present,
                      {"unit absent", "the camera has no " + name + " extension unit",
                       "\"zemctl info\" tells which units it has.", kUnitAbsent});
  }
}

}  // namespace zemctl
