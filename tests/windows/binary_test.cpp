// The DLL as a file: its export table, its imports, its flags, its version.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

// The loaded image of the DLL.
class Image {
 public:
  Image() : base_(reinterpret_cast<const std::byte*>(GetModuleHandleW(L"ZemUVCExtApi.dll"))) {}

  template <class Record>
  const Record* At(DWORD offset) const {
    return reinterpret_cast<const Record*>(base_ + offset);
  }

  const IMAGE_NT_HEADERS64& headers() const {
    return *At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
  }

  template <class Record>
  const Record* Directory(unsigned entry) const {
    return At<Record>(headers().OptionalHeader.DataDirectory[entry].VirtualAddress);
  }

 private:
  const std::byte* base_;
};

TEST(BinaryTest, ExportsExactlyTheInterface) {
  const Image image;
  const auto* const exports = image.Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
  const auto* const names = image.At<DWORD>(exports->AddressOfNames);
  std::set<std::string> present;
  for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
    present.insert(image.At<char>(names[index]));
  }
  const std::set<std::string> wanted = {
      // Opening and closing a camera
      "ZEMAPI_OpenDevice",
      "ZEMAPI_OpenDeviceEx",
      "ZEMAPI_OpenZemDevice",
      "ZEMAPI_OpenDeviceByPath",
      "ZEMAPI_OpenDeviceByDevPath",
      "ZEMAPI_OpenDeviceBySourceFilter",
      "ZEMAPI_CloseDevice",
      "ZEMAPI_GetSerialNumber",
      // Raw access to extension units
      "ZEMAPI_UvcExtSet",
      "ZEMAPI_UvcExtGet",
      "ZEMAPI_ZemExtSet",
      "ZEMAPI_ZemExtGet",
      "ZEMAPI_UvcCheckXuGuid",
      // Registers and vendor commands
      "ZEMAPI_SetRegister",
      "ZEMAPI_GetRegister",
      "ZEMAPI_SetSensorRegister",
      "ZEMAPI_GetSensorRegister",
      "ZEMAPI_SetSensorRegisterW",
      "ZEMAPI_GetSensorRegisterW",
      "ZEMAPI_SetVCMRegister",
      "ZEMAPI_GetVCMRegister",
      "ZEMAPI_SetLensPos",
      "ZEMAPI_GetFWVersion",
      "?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z",
      "ZEMAPI_GetCheckSumResult",
      "ZEMAPI_ReadCodecReg",
      "ZEMAPI_WriteCodecReg",
      "ZEMAPI_IspCommand",
      "ZEMAPI_VcpCommand",
      "ZEMAPI_IspCommandEx",
      "ZEMAPI_VcpCommandEx",
      "ZEMAPI_GetDeviceInfo",
      // Image tuning and information
      "ZEMAPI_GetFWBuildDate",
      "ZEMAPI_EnableAF",
      "ZEMAPI_EnableAE",
      "ZEMAPI_GetAFACC",
      "ZEMAPI_SetVideoRecMode",
      "ZEMAPI_SetAWBGain",
      "ZEMAPI_GetAWBGain",
      "ZEMAPI_EnableManualGainCtrl",
      "ZEMAPI_SetShadding",
      "ZEMAPI_SetMiscSetting",
      "ZEMAPI_GetMiscSetting",
      "ZEMAPI_SetMjpgQuality",
      "ZEMAPI_SetImageEffect",
      "ZEMAPI_SetMaxQP",
      "ZEMAPI_SetMinQP",
      "ZEMAPI_GetSensorSN",
      "ZEMAPI_GetSkypeXUVersion",
      // Standard camera, video and audio controls
      "ZEMAPI_GetVideoProcAmp",
      "ZEMAPI_SetVideoProcAmp",
      "ZEMAPI_GetVideoProcAmpRange",
      "ZEMAPI_GetCameraControl",
      "ZEMAPI_SetCameraControl",
      "ZEMAPI_GetCameraControlRange",
      "ZEMAPI_Get_IVideoProcAmp_Interface",
      "ZEMAPI_AudioOpenDeviceByPath",
      "ZEMAPI_AudioCloseDevice",
      "ZEMAPI_AudioSetVolume",
      // Encoding unit
      "WREN_OpenDevice",
      "WREN_CloseDevice",
      "WREN_EuSet",
      "?WREN_EuGet@@YAJPEAXI0G@Z",
      "WREN_ProbeSet",
      "WREN_ProbeGet",
      "WREN_CommitSet",
      "WREN_CommitGet",
      "WREN_WriteLog",
      // Bulk data
      "ZEMAPI_SendData",
      "ZEMAPI_WriteFWData",
      "ZEMAPI_ReadFWData",
      "ZEMAPI_ReadPartialFlashData",
      // Firmware update
      "ZEMAPI_UpdateFW_516x",
      "ZEMAPI_UpdateFW_517x",
      "ZEMAPI_UpdateFlash",
      "ZEMAPI_UpdateCaliData",
      // Non-volatile memory and tables
      "ZEMAPI_WriteNVMEM",
      "ZEMAPI_ReadNVMEM",
      "ZEMAPI_TIRELLA_WriteNVMEM",
      "ZEMAPI_TIRELLA_ReadNVMEM",
      "ZEMAPI_TIRELLA_LedCtrl",
      "ZEMAPI_OpenTableHandle",
      "ZEMAPI_CloseTableHandle",
      "ZEMAPI_GetTableSize",
      "ZEMAPI_ReadTableEx",
      "ZEMAPI_WriteTableEx",
      "ZEMAPI_ReadTable",
      "ZEMAPI_WriteTable",
      "ZEMAPI_WriteInitialTable",
      "ZEMAPI_DumpWholeTable",
      // Calls without a handle
      "ZEMUVCEXT_DoAF",
      "ZEMUVCEXT_SetFps",
      "ZEMUVCEXT_SetResolution",
      "ZEMUVCEXT_SetIFrame",
      "ZEMUVCEXT_SetVideoQuality",
      "ZEMUVCEXT_SetBitRate",
      "ZEMUVCEXT_SetFlickMode",
      "ZEMUVCEXT_GetRegister",
      "ZEMUVCEXT_SetRegister",
      "ZEMUVCEXT_GetSensorRegister",
      "ZEMUVCEXT_GetSensorRegisterW",
      "ZEMUVCEXT_SetSensorRegister",
      "ZEMUVCEXT_SetSensorRegisterW",
      "ZEMUVCEXT_GetFWVersion",
      "ZEMUVCEXT_GetFWBuildDay",
      "ZEMUVCEXT_SetH264Mode",
      "ZEMUVCEXT_SetWDR",
      "ZEMUVCEXT_IspCommand",
      "ZEMUVCEXT_IspCommandEx",
      "ZEMUVCEXT_VcpCommand",
      "ZEMUVCEXT_GetChipInfo",
      "ZEMUVCEXT_IspCmdWriteMem",
      "ZEMUVCEXT_IspCmdReadMem",
      "ZEMUVCEXT_WriteFWData",
      "ZEMUVCEXT_ReadFWData",
      "ZEMUVCEXT_UpdateFW",
      "ZEMUVCEXT_UpdateFW_with_progress",
      "ZEMUVCEXT_UpdateFW_with_progressEx",
      "ZEMUVCEXT_UpdateFW_Vision",
      // ROM boot
      "ZEMAPI_ResetToRomboot",
      "ZEMAPI_ResetToRomboot_VCP8",
      "ZEMAPI_ResetToRomboot_VCP16",
      "ZEMROMAPI_OpenDevice",
      "ZEMROMAPI_CloseDevice",
      "ZEMROMAPI_CreateDumpFile",
      "ZEMROMAPI_LoadMiniUVC",
      "ZEMROMAPI_LoadUpdater",
      "ZEMROMAPI_ResetSystem",
      "ZEMROMAPI_SwitchModePCAM_SF",
      "?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z",
      "ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND",
      "ZEMROMAPI_SwitchModePCAM_SPI_NAND",
      "ZEMROMAPI_SwitchModePCAM_EMMC",
      "ZEMROMAPI_LongJump",
      "ZEMROMAPI_SetFwDownloadAddr",
      "ZEMROMAPI_WriteRegister",
      "ZEMROMAPI_ReadRegister",
      "ZEMROMAPI_ScsiCommand",
      "ZEMROMAPI_MkEmmcEhancedArea",
      "ZEMROMAPI_Erase",
      "ZEMROMAPI_BurnFw",
      "ZEMROMAPI_BurnPcCamFw",
      "ZEMROMAPI_BurnPcCamFwPnsV2",
      "ZEMROMAPI_DispackZemPcCamFw",
      "ZEMROMAPI_UpdateLinuxFwPkg",
      "ZEMROMAPI_UpdateLinuxFwPkg_",
      "ZEMROMAPI_PartialUpdateWithHeader",
      "ZEMROMAPI_PartialUpdate",
      "ZEMROMAPI_PartialRead",
      "ZEMROMAPI_LoadFW2Memory",
      // H.264
      "ZEMAPI_GetH264FrameList",
      "ZEMAPI_ReleaseH264FrameList",
      "ZEMAPI_SetH264FrameIndex",
      "ZEMAPI_SetH264Mode",
      "ZEMAPI_GetH264_UVC_PayloadFormat",
      "ZEMAPI_SetFps",
      "ZEMAPI_SetBitRate",
      "ZEMAPI_ForceIFrame",
      "ZEMAPI_SetPframeCount",
      // Streams and endpoints
      "ORVAAPI_GetVersion",
      "ORVAAPI_FirmwareBuildDay",
      "ORVAAPI_SetStreamID",
      "ORVAAPI_GetEndpointSetting",
      "ORVAAPI_StreamFormatProbeCommit",
      "ORVAAPI_ToggleLayerControl",
      "ZEMAPI_MulticastStreamID",
      "ZEMAPI_MulticasToggleLayer",
      "ZEMAPI_MulticastCommit",
      // Frames and sound
      "NV12_to_RGB",
      "ConvertYUY2toBMP",
      "ConvertNV12toBMP",
      "ConvertRGBtoBMP",
      "PackWavFile",
  };
  EXPECT_EQ(present, wanted);
  EXPECT_EQ(exports->NumberOfFunctions, wanted.size());
}

TEST(BinaryTest, ImportsNothingButTheSystem) {
  const std::set<std::string> system = {"KERNEL32.dll", "ole32.dll", "OLEAUT32.dll",
                                        "SHLWAPI.dll",  "WINMM.dll", "USER32.dll"};
  const Image image;
  const auto* import = image.Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT);
  ASSERT_NE(import->Name, 0U);
  for (; import->Name != 0; ++import) {
    const std::string name = image.At<char>(import->Name);
    EXPECT_TRUE(system.contains(name) || name.starts_with("api-ms-win-crt-")) << name;
  }
}

TEST(BinaryTest, ImportsThePlatformCallsByName) {
  const Image image;
  std::set<std::string> names;
  for (const auto* import = image.Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT);
       import->Name != 0; ++import) {
    for (const auto* thunk = image.At<IMAGE_THUNK_DATA64>(import->OriginalFirstThunk);
         thunk->u1.AddressOfData != 0; ++thunk) {
      names.insert(
          image.At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(thunk->u1.AddressOfData))->Name);
    }
  }
  for (const char* const wanted : {"CoInitialize",
                                   "CoUninitialize",
                                   "CoCreateInstance",
                                   "CoGetMalloc",
                                   "VariantInit",
                                   "VariantClear",
                                   "GetPrivateProfileIntW",
                                   "GetModuleFileNameW",
                                   "PathRemoveFileSpecW",
                                   "OutputDebugStringW",
                                   "GetLocalTime",
                                   "GetWindowsDirectoryW",
                                   "Sleep",
                                   "timeGetTime",
                                   "PeekMessageW",
                                   "GetMessageW",
                                   "TranslateMessage",
                                   "DispatchMessageW",
                                   "CreateFileW",
                                   "DeviceIoControl",
                                   "CloseHandle",
                                   "GetLastError",
                                   "FormatMessageW",
                                   "LocalFree"}) {
    EXPECT_TRUE(names.contains(wanted)) << wanted;
  }
}

TEST(BinaryTest, IsRelocatableWithoutExecutableDataAndWithoutTimeStamp) {
  const IMAGE_NT_HEADERS64& headers = Image().headers();
  const WORD flags = headers.OptionalHeader.DllCharacteristics;
  EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
  EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
  EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
  EXPECT_EQ(headers.FileHeader.TimeDateStamp, 0U);
}

TEST(BinaryTest, CarriesAVersion) {
  const DWORD size = GetFileVersionInfoSizeW(L"ZemUVCExtApi.dll", nullptr);
  ASSERT_GT(size, 0U);
  std::vector<std::byte> resource(size);
  ASSERT_TRUE(GetFileVersionInfoW(L"ZemUVCExtApi.dll", 0, size, resource.data()));
  VS_FIXEDFILEINFO* version = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&version), &length));
  EXPECT_EQ(version->dwFileVersionMS, 0x00010000U);
  EXPECT_EQ(version->dwFileVersionLS, 0U);
}

}  // namespace
