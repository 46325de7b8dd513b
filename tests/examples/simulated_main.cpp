// Runs an example, whose main is ExampleMain here, among simulated cameras: the first argument is
// the simulator's options, the others are the example's.
#undef main
#include <cstdio>

#include "simulator/ZemSimulator.h"

#ifdef ZEM_EXAMPLE_IN_C
extern "C"
#endif
    int
    ExampleMain(int count, char** arguments);

int main(int argc, char** argv) {
  constexpr int kNoSimulator = 99;
  if (argc < 2 || ZemSimulatorStartPrivate(argv[1]) < 0) {
    std::printf("%s\n", ZemSimulatorLastError());
    return kNoSimulator;
  }
  const int result = ExampleMain(argc - 1, argv + 1);
  ZemSimulatorStop();
  return result;
}
