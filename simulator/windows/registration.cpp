#include "simulator/windows/registration.h"

#include <array>

namespace zem::simulator {
namespace {

// Both are searched for COM classes; a user without administrator rights may write the second only.
struct Root {
  HKEY key;
  const wchar_t* prefix;
};
const std::array<Root, 2> kRoots = {
    {{HKEY_CLASSES_ROOT, L"CLSID\\"}, {HKEY_CURRENT_USER, L"Software\\Classes\\CLSID\\"}}};

std::wstring TextOf(const GUID& id) {
  std::array<wchar_t, 64> text = {};
  StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::wstring InstancePath(const GUID& category, const std::wstring& instanceName) {
  return TextOf(category) + L"\\Instance\\" + instanceName;
}

HRESULT SetValue(HKEY key, const wchar_t* name, const std::wstring& text) {
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  return HRESULT_FROM_WIN32(static_cast<unsigned long>(
      RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size)));
}

struct Value {
  const wchar_t* name;
  std::wstring text;
};

template <std::size_t count>
HRESULT WriteKey(const std::wstring& path, const Value (&values)[count]) {
  HRESULT result = E_FAIL;
  for (const Root& root : kRoots) {
    HKEY key = nullptr;
    result = HRESULT_FROM_WIN32(static_cast<unsigned long>(RegCreateKeyExW(
        root.key, (root.prefix + path).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr)));
    if (FAILED(result)) {
      continue;
    }
    for (const Value& value : values) {
      if (SUCCEEDED(result)) {
        result = SetValue(key, value.name, value.text);
      }
    }
    RegCloseKey(key);
    break;
  }
  return result;
}

void DeleteKey(const std::wstring& path) {
  for (const Root& root : kRoots) {
    RegDeleteTreeW(root.key, (root.prefix + path).c_str());
  }
}

enum class DeviceKind : unsigned char { kCamera = 0, kMicrophone = 1 };

GUID ClassId(DeviceKind kind, std::size_t index) {
  GUID id = {0x5A454D53, 0x494D, 0x4341, {0x8D, 0x45, 0x52, 0x41, 0x00, 0x00, 0x00, 0x00}};
  id.Data4[6] = static_cast<unsigned char>(kind);
  id.Data4[7] = static_cast<unsigned char>(index);
  return id;
}

}  // namespace

GUID CameraClassId(std::size_t index) { return ClassId(DeviceKind::kCamera, index); }

GUID MicrophoneClassId(std::size_t index) { return ClassId(DeviceKind::kMicrophone, index); }

std::wstring DisplayName(const GUID& category, const std::wstring& instanceName) {
  return L"@device:sw:" + TextOf(category) + L"\\" + instanceName;
}

HRESULT RegisterDevice(const GUID& classId, const GUID& category, const std::wstring& instanceName,
                       const std::wstring& friendlyName, const std::wstring& devicePath,
                       const std::wstring& modulePath) {
  const std::wstring classText = TextOf(classId);
  if (const HRESULT result =
          WriteKey(classText + L"\\InprocServer32",
                   {Value{nullptr, modulePath}, Value{L"ThreadingModel", L"Both"}});
      FAILED(result)) {
    return result;
  }
  return WriteKey(InstancePath(category, instanceName),
                  {Value{L"FriendlyName", friendlyName}, Value{L"CLSID", classText},
                   Value{L"DevicePath", devicePath}});
}

void UnlistDevice(const GUID& category, const std::wstring& instanceName) {
  DeleteKey(InstancePath(category, instanceName));
}

void UnregisterClass(const GUID& classId) { DeleteKey(TextOf(classId)); }

}  // namespace zem::simulator
