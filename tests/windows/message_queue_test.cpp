// The thread's real message queue during a transfer.
#include <windows.h>

#include <array>
#include <vector>

#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;

// A window without a picture that writes down what its procedure gets.
class MessageWindow {
 public:
  MessageWindow() {
    WNDCLASSW description = {};
    description.lpfnWndProc = Procedure;
    description.lpszClassName = L"ZemMessageQueueTest";
    RegisterClassW(&description);
    handle_ = CreateWindowExW(0, description.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                              nullptr, nullptr, nullptr);
    EXPECT_NE(handle_, nullptr);
    received.clear();
  }
  ~MessageWindow() { DestroyWindow(handle_); }
  MessageWindow(const MessageWindow&) = delete;
  MessageWindow& operator=(const MessageWindow&) = delete;

  void Post(UINT message, WPARAM parameter = 0) const {
    EXPECT_TRUE(PostMessageW(handle_, message, parameter, 0));
  }

  static inline std::vector<UINT> received;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    received.push_back(message);
    return DefWindowProcW(window, message, wParam, lParam);
  }

  HWND handle_ = nullptr;
};

void IgnoreProgress(std::uint32_t /*value*/, std::uint64_t /*user*/) {}

TEST(MessageQueueTest, TransferDispatchesWhatIsPosted) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  const MessageWindow window;
  window.Post(WM_APP);
  window.Post(WM_APP + 1);
  EXPECT_EQ(ZEMAPI_WriteFWData(camera, nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(MessageWindow::received, (std::vector<UINT>{WM_APP, WM_APP + 1}));
}

TEST(MessageQueueTest, KeysAreTranslated) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  const MessageWindow window;
  window.Post(WM_KEYDOWN, 'A');
  EXPECT_EQ(ZEMAPI_WriteFWData(camera, nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(MessageWindow::received, (std::vector<UINT>{WM_KEYDOWN, WM_CHAR}));
}

TEST(MessageQueueTest, QuitMessageEndsOneDrainAndIsTaken) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  const MessageWindow window;
  EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 0, 0));
  window.Post(WM_APP);
  EXPECT_EQ(ZEMAPI_WriteFWData(camera, nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(MessageWindow::received, std::vector<UINT>());
  EXPECT_EQ(ZEMAPI_WriteFWData(camera, nullptr, 0, nullptr, 0), 0);
  EXPECT_EQ(MessageWindow::received, std::vector<UINT>{WM_APP});
}

TEST(MessageQueueTest, QueueIsDrainedAfterEachReport) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  const MessageWindow window;
  const std::vector<std::uint8_t> data(1024);
  const std::array<std::uint8_t, 8> announce = {0x01, 0x00, 0x02, 0x00, 0x00, 0x04};
  EXPECT_EQ(ZEMUVCEXT_VcpCommand(announce.data(), nullptr), 0);
  // The quit message ends the drain after the first chunk, so that the next one finds the other.
  EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 0, 0));
  window.Post(WM_APP);
  EXPECT_EQ(ZEMAPI_WriteFWData(camera, data.data(), 1024, IgnoreProgress, 0), 0);
  EXPECT_EQ(MessageWindow::received, std::vector<UINT>{WM_APP});
}

}  // namespace
