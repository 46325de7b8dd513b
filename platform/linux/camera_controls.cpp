#include "platform/linux/camera_controls.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <optional>
#include <span>

#include "platform/any_null.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/linux/control_units.h"
#include "platform/linux/errors.h"

namespace zem::platform {
namespace {

// Flags of a setting and of a range.
constexpr LONG kAutomatic = 1;
constexpr LONG kManual = 2;

// A property beside V4L2's control, and the switch between its automatic and its manual setting.
struct PropertyRow {
  LONG property;
  std::uint32_t control;
  std::uint32_t automatic;  // 0 is none
  ControlUnit unit;
};

constexpr PropertyRow kVideoProcessing[] = {
    {0, V4L2_CID_BRIGHTNESS, V4L2_CID_AUTOBRIGHTNESS, ControlUnit::kAsItIs},
    {1, V4L2_CID_CONTRAST, 0, ControlUnit::kAsItIs},
    {2, V4L2_CID_HUE, V4L2_CID_HUE_AUTO, ControlUnit::kAsItIs},
    {3, V4L2_CID_SATURATION, 0, ControlUnit::kAsItIs},
    {4, V4L2_CID_SHARPNESS, 0, ControlUnit::kAsItIs},
    {5, V4L2_CID_GAMMA, 0, ControlUnit::kAsItIs},
    {7, V4L2_CID_WHITE_BALANCE_TEMPERATURE, V4L2_CID_AUTO_WHITE_BALANCE, ControlUnit::kAsItIs},
    {8, V4L2_CID_BACKLIGHT_COMPENSATION, 0, ControlUnit::kAsItIs},
    {9, V4L2_CID_GAIN, V4L2_CID_AUTOGAIN, ControlUnit::kAsItIs},
};

constexpr PropertyRow kCameraTerminal[] = {
    {0, V4L2_CID_PAN_ABSOLUTE, 0, ControlUnit::kDegrees},
    {1, V4L2_CID_TILT_ABSOLUTE, 0, ControlUnit::kDegrees},
    {3, V4L2_CID_ZOOM_ABSOLUTE, 0, ControlUnit::kAsItIs},
    {4, V4L2_CID_EXPOSURE_ABSOLUTE, V4L2_CID_EXPOSURE_AUTO, ControlUnit::kExposure},
    {5, V4L2_CID_IRIS_ABSOLUTE, 0, ControlUnit::kFStop},
    {6, V4L2_CID_FOCUS_ABSOLUTE, V4L2_CID_FOCUS_AUTO, ControlUnit::kAsItIs},
};

template <class Interface>
struct RowsOf;
template <>
struct RowsOf<IAMVideoProcAmp> {
  static constexpr std::span<const PropertyRow> kRows = kVideoProcessing;
  static constexpr const GUID& kId = IID_IAMVideoProcAmp;
};
template <>
struct RowsOf<IAMCameraControl> {
  static constexpr std::span<const PropertyRow> kRows = kCameraTerminal;
  static constexpr const GUID& kId = IID_IAMCameraControl;
};

// The values of a switch that mean automatic and manual; a camera may have one of them only.
struct SwitchValues {
  std::optional<std::int32_t> automatic;
  std::optional<std::int32_t> manual;
};

// V4L2's controls of one camera. Negative results are errno values.
class Controls {
 public:
  explicit Controls(const DeviceFile& file) : file_(file) {}

  int Query(std::uint32_t id, v4l2_queryctrl& description) const {
    description = {};
    description.id = id;
    const int result = file_.Control(VIDIOC_QUERYCTRL, &description);
    return result >= 0 && (description.flags & V4L2_CTRL_FLAG_DISABLED) != 0 ? -EINVAL : result;
  }

  int Get(std::uint32_t id, std::int32_t& value) const {
    v4l2_control control = {id, 0};
    const int result = file_.Control(VIDIOC_G_CTRL, &control);
    value = control.value;
    return result;
  }

  int Set(std::uint32_t id, std::int32_t value) const {
    v4l2_control control = {id, value};
    return file_.Control(VIDIOC_S_CTRL, &control);
  }

  // Without a switch `values` stay empty: the property is manual.
  int ReadSwitch(std::uint32_t id, SwitchValues& values) const {
    v4l2_queryctrl description = {};
    if (const int result = id != 0 ? Query(id, description) : -EINVAL; result < 0) {
      return result == -EINVAL ? 0 : result;
    }
    if (id != V4L2_CID_EXPOSURE_AUTO) {
      values = {1, 0};
      return 0;
    }
    // Of the exposure's modes two leave its time to the camera, and two to the host.
    const int result =
        FindFirst(id, {V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY}, values.automatic);
    return result < 0 ? result
                      : FindFirst(id, {V4L2_EXPOSURE_MANUAL, V4L2_EXPOSURE_SHUTTER_PRIORITY},
                                  values.manual);
  }

  // Whether a switch with this value means automatic.
  static bool IsAutomatic(std::uint32_t id, std::int32_t value) {
    return id == V4L2_CID_EXPOSURE_AUTO
               ? value == V4L2_EXPOSURE_AUTO || value == V4L2_EXPOSURE_APERTURE_PRIORITY
               : value != 0;
  }

 private:
  // The first of the values that a menu has, if it has one.
  int FindFirst(std::uint32_t id, std::initializer_list<std::uint32_t> values,
                std::optional<std::int32_t>& found) const {
    for (const std::uint32_t value : values) {
      v4l2_querymenu entry = {};
      entry.id = id;
      entry.index = value;
      const int result = file_.Control(VIDIOC_QUERYMENU, &entry);
      if (result >= 0) {
        found = static_cast<std::int32_t>(value);
        break;
      }
      if (result != -EINVAL) {
        return result;
      }
    }
    return 0;
  }

  const DeviceFile& file_;
};

// A control that V4L2 does not know is a property that the camera lacks.
HRESULT ResultOfQuery(int error) {
  return error == -EINVAL ? ResultOfError(kNotFound) : ResultOfErrno(error);
}

template <class Interface>
class CameraControls : public CountedObject<Interface> {
 public:
  CameraControls(IUnknown* owner, const DeviceFile& file)
      : owner_(ComPtr<IUnknown>::Share(owner)), controls_(file) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<Interface>(this, RowsOf<Interface>::kId, iid, object);
  }

  HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                     LONG* defaultValue, LONG* flags) override {
    if (AnyNull(minimum, maximum, step, defaultValue, flags)) {
      return E_POINTER;
    }
    const PropertyRow* row = nullptr;
    v4l2_queryctrl description = {};
    SwitchValues values;
    if (const HRESULT result = Describe(property, row, description, values); FAILED(result)) {
      return result;
    }
    *minimum = FromV4l2(row->unit, description.minimum);
    *maximum = FromV4l2(row->unit, description.maximum);
    *step = StepFromV4l2(row->unit, description.step);
    *defaultValue = FromV4l2(row->unit, description.default_value);
    *flags = FlagsOf(values);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
    const PropertyRow* row = nullptr;
    v4l2_queryctrl description = {};
    SwitchValues values;
    if (const HRESULT result = Describe(property, row, description, values); FAILED(result)) {
      return result;
    }
    if ((flags != kAutomatic && flags != kManual) || (FlagsOf(values) & flags) == 0 ||
        (flags == kManual && !IsInRange(*row, description, value))) {
      return ResultOfError(kInvalidParameter);
    }
    const std::optional<std::int32_t> turn = flags == kAutomatic ? values.automatic : values.manual;
    if (turn) {
      if (const int result = controls_.Set(row->automatic, *turn); result < 0) {
        return ResultOfErrno(result);
      }
    }
    if (flags == kAutomatic) {
      return S_OK;
    }
    const std::int32_t wanted =
        std::clamp(ToV4l2(row->unit, value), description.minimum, description.maximum);
    const int result = controls_.Set(row->control, wanted);
    return result < 0 ? ResultOfErrno(result) : S_OK;
  }

  HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
    if (AnyNull(value, flags)) {
      return E_POINTER;
    }
    const PropertyRow* const row = FindRow(property);
    if (row == nullptr) {
      return ResultOfError(kNotFound);
    }
    std::int32_t present = 0;
    if (const int result = controls_.Get(row->control, present); result < 0) {
      return ResultOfQuery(result);
    }
    SwitchValues values;
    std::int32_t turned = 0;
    int result = controls_.ReadSwitch(row->automatic, values);
    if (result >= 0 && values.automatic) {
      result = controls_.Get(row->automatic, turned);
    }
    if (result < 0) {
      return ResultOfErrno(result);
    }
    const bool automatic = values.automatic && Controls::IsAutomatic(row->automatic, turned);
    *value = FromV4l2(row->unit, present);
    *flags = automatic ? kAutomatic : kManual;
    return S_OK;
  }

 private:
  static const PropertyRow* FindRow(LONG property) {
    const auto rows = RowsOf<Interface>::kRows;
    const auto found = std::find_if(rows.begin(), rows.end(), [property](const PropertyRow& row) {
      return row.property == property;
    });
    return found != rows.end() ? &*found : nullptr;
  }

  HRESULT Describe(LONG property, const PropertyRow*& row, v4l2_queryctrl& description,
                   SwitchValues& values) const {
    row = FindRow(property);
    if (row == nullptr) {
      return ResultOfError(kNotFound);
    }
    if (const int result = controls_.Query(row->control, description); result < 0) {
      return ResultOfQuery(result);
    }
    const int result = controls_.ReadSwitch(row->automatic, values);
    return result < 0 ? ResultOfErrno(result) : S_OK;
  }

  static LONG FlagsOf(const SwitchValues& values) {
    if (!values.automatic) {
      return kManual;
    }
    return values.manual ? kAutomatic | kManual : kAutomatic;
  }

  static bool IsInRange(const PropertyRow& row, const v4l2_queryctrl& description, LONG value) {
    return value >= FromV4l2(row.unit, description.minimum) &&
           value <= FromV4l2(row.unit, description.maximum);
  }

  ComPtr<IUnknown> owner_;
  Controls controls_;
};

template <class Interface>
HRESULT Make(IUnknown* owner, const DeviceFile& file, void** object) {
  Interface* const made = new (std::nothrow) CameraControls<Interface>(owner, file);
  *object = made;
  return made != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

}  // namespace

HRESULT MakeCameraControls(IUnknown* owner, const DeviceFile& file, REFIID iid, void** object) {
  return iid == IID_IAMVideoProcAmp ? Make<IAMVideoProcAmp>(owner, file, object)
                                    : Make<IAMCameraControl>(owner, file, object);
}

}  // namespace zem::platform
