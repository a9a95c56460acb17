#include "platform/os/windows/wnd.h"

#include <memory>

#include "tests/support/window_fixture.h"

namespace {

constexpr UINT kAdd = os::kWmUser;
constexpr UINT kEnd = os::kWmUser + 1;
constexpr UINT kUnknown = os::kWmUser + 2;

class Adder final : public CWnd {
 public:
  explicit Adder(int* told) : m_told(told) {}
  ~Adder() override { DestroyWindow(); }

 private:
  std::span<const os::MessageMapEntry> GetMessageMap() const override {
    static constexpr os::MessageMapEntry kMap[] = {
        {kAdd, os::HandleWith<Adder, &Adder::OnAdd>},
        {kEnd, os::HandleWith<Adder, &Adder::OnEnd>},
        {os::kWmDestroy, os::HandleWith<Adder, &Adder::OnDestroy>}};
    return kMap;
  }
  LRESULT OnAdd(WPARAM wparam, LPARAM lparam) {
    return static_cast<LRESULT>(wparam) + lparam + *m_told;
  }
  LRESULT OnEnd(WPARAM depth, LPARAM) {
    if (depth > 0) return os::SendMessage(GetSafeHwnd(), kEnd, depth - 1, 0) + 1;
    delete this;
    return 5;
  }
  LRESULT OnDestroy(WPARAM, LPARAM) { return ++*m_told; }

  int* const m_told;
};

class Wnd : public WindowTest {
 protected:
  int m_told = 0;
  std::unique_ptr<Adder> m_adder = std::make_unique<Adder>(&m_told);
};

TEST_F(Wnd, HandlesMessagesByItsMapAndMayBeDeletedInAHandler) {
  HWND parent = Make();
  EXPECT_EQ(m_adder->DestroyWindow(), 0);
  EXPECT_EQ(m_adder->CreateChild(nullptr, "adder", 1), 0);
  EXPECT_EQ(m_adder->CreateChild(parent, "adder", 12), 1);
  EXPECT_EQ(m_adder->CreateChild(parent, "again", 13), 0);
  HWND window = m_adder->GetSafeHwnd();
  EXPECT_EQ(os::GetWindowText(window), "adder");
  EXPECT_EQ(m_adder->GetDlgCtrlID(), 12U);
  EXPECT_EQ(os::SendMessage(window, kAdd, 40, 2), 42);
  EXPECT_EQ(os::SendMessage(window, kUnknown, 40, 2), 0);
  m_adder.release();  // NOLINT(bugprone-unused-return-value): deletes itself
  EXPECT_EQ(os::SendMessage(window, kEnd, 0, 0), 5);
  EXPECT_EQ(os::IsWindow(window), 0);
  EXPECT_EQ(m_told, 0);
}

// Its parent goes: in the same thread, and in another one, which is told only when it looks.
TEST_F(Wnd, GoesWithItsParentAndIsThenNoWindow) {
  for (const bool is_alone : {false, true}) {
    HWND parent = nullptr;
    {
      const LoopThread other([](HWND window, UINT, WPARAM, LPARAM) -> LRESULT {
        os::DestroyWindow(window);
        os::PostQuitMessage(0);
        return 0;
      });
      parent = is_alone ? Make() : other.Window();
      ASSERT_EQ(m_adder->CreateChild(parent, "adder", 1), 1);
      os::PostMessage(other.Window(), kEnd, 0, 0);
      os::DestroyWindow(parent);
    }
    HWND window = m_adder->GetSafeHwnd();
    EXPECT_EQ(os::IsWindow(window), 0);
    EXPECT_EQ(m_adder->CreateChild(parent, "adder", 1), 0);
    EXPECT_EQ(m_adder->GetSafeHwnd(), window);
    ASSERT_EQ(m_adder->CreateChild(Make(), "adder", 1), 1);
    EXPECT_NE(m_adder->GetSafeHwnd(), window);
    EXPECT_EQ(m_adder->DestroyWindow(), 1);
    EXPECT_EQ(m_adder->GetSafeHwnd(), nullptr);
    os::Message message;
    os::PeekMessage(&message);
    EXPECT_EQ(m_told, is_alone ? 1 : 0);
  }
}

}  // namespace
