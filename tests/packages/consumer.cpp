// A C++ program as its authors build it with a package: reads what it wrote to a simulated camera.
#include <ZemSimulator.h>

#include <ZemUVC.hpp>
#include <cstdio>

int main() {
  if (ZemSimulatorStartPrivate("{}") < 0) {
    std::printf("%s\n", ZemSimulatorLastError());
    return 1;
  }
  try {
    zemuvc::Camera camera = zemuvc::Camera::Open();
    camera.SetRegister(0x123456, 0xABCD);
    std::printf("C++ %s 0x%04X\n", ZEM_VERSION,
                static_cast<unsigned>(camera.GetRegister(0x123456)));
  } catch (const zemuvc::Error& error) {
    std::printf("%s\n", error.what());
    return 1;
  }
  ZemSimulatorStop();
  return 0;
}
