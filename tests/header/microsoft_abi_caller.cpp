// What a caller of ZemUVC.hpp asks a Microsoft linker for: one function of each kind.
#include "include/ZemUVC.hpp"

unsigned Use() {
  std::error_code code;
  zemuvc::Camera camera = zemuvc::Camera::Open(0, code);
  std::uint8_t block[8] = {};
  zemuvc::EncodingUnit().Get(1, block, code);
  zemuvc::RomBoot().SelectMemory(code);
  zemuvc::SavePixelsAsBmp(L"pixels.bmp", block, 1, 1, code);
  return camera.GetRegister(0) + camera.GetFirmwareVersionReply(code)[0] +
         static_cast<unsigned>(zemuvc::ListCameras(code).size());
}
