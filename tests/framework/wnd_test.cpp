#include "tvutil2/framework/wnd.h"

#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

constexpr UINT kAsk = WM_USER + 5;

class Base : public CWnd {
    DECLARE_DYNCREATE(Base)
  public:
    std::string heard;

  protected:
    void PostNcDestroy() override { heard += "after,"; }
    void OnDestroy() {
        heard += "destroy,";
        CWnd::OnDestroy();
    }
    LRESULT OnAsk(WPARAM wparam, LPARAM lparam) { return static_cast<LRESULT>(wparam) + lparam; }
    void OnButton() { heard += "button,"; }
    DECLARE_MESSAGE_MAP()
};

IMPLEMENT_DYNCREATE(Base, CWnd)
BEGIN_MESSAGE_MAP(Base, CWnd)
ON_MESSAGE(kAsk, &Base::OnAsk)
ON_BN_CLICKED(7, &Base::OnButton)
ON_WM_DESTROY()
END_MESSAGE_MAP()

class Derived : public Base {
  public:
    BOOL PreTranslateMessage(MSG* message) override { return message->message == kAsk + 1; }

  protected:
    int OnCreate(CREATESTRUCTW* given) {
        heard += given->x == 4 ? "create," : "elsewhere,";
        return CWnd::OnCreate(given);
    }
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_NCCREATE) heard += "first,";
        return Base::WindowProc(message, wparam, lparam);
    }
    LRESULT OnAsk(WPARAM /*wparam*/, LPARAM /*lparam*/) { return 99; }
    void OnTimer(UINT_PTR id) { heard += "timer" + std::to_string(id) + ","; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Derived, Base)
ON_WM_CREATE()
ON_MESSAGE(kAsk, &Derived::OnAsk)
ON_WM_TIMER()
END_MESSAGE_MAP()

constexpr RECT kRect{4, 5, 14, 25};

TEST(Wnd, HearsItsWindowFromTheFirstMessageToTheLast) {
    Derived window;
    ASSERT_TRUE(window.CreateEx(0, u"STATIC", u"text", 0, kRect, nullptr, 0));
    EXPECT_FALSE(window.CreateEx(0, u"STATIC", u"text", 0, kRect, nullptr, 0));
    EXPECT_EQ(window.heard, "first,create,");
    window.heard.clear();
    CString text;
    window.GetWindowText(text);
    EXPECT_EQ(text, u"text");
    EXPECT_EQ(window.SendMessage(kAsk, 1, 2), 99);  // the derived class's entry goes first
    window.SendMessage(WM_COMMAND, MAKEWPARAM(7, 0));
    window.SendMessage(WM_COMMAND, MAKEWPARAM(8, 0));
    window.SendMessage(WM_TIMER, 3);
    EXPECT_EQ(window.heard, "button,timer3,");
    window.heard.clear();
    auto* const handle = window.m_hWnd;
    EXPECT_EQ(CWnd::FromHandle(handle), &window);
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_EQ(window.heard, "destroy,after,");
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_EQ(CWnd::FromHandlePermanent(handle), nullptr);
    EXPECT_FALSE(window.DestroyWindow());
}

TEST(Wnd, IsRefusedForAnUnknownClass) {
    Base window;
    EXPECT_FALSE(window.CreateEx(0, u"no such class", u"", 0, kRect, nullptr, 0));
    EXPECT_EQ(window.heard, "after,");
    EXPECT_TRUE(window.CreateEx(0, nullptr, u"", 0, kRect, nullptr, 0));
}

TEST(Wnd, SubclassesAttachesAndStandsForWindowsOfOthers) {
    auto* const handle =
        CreateWindowExW(0, u"STATIC", u"plain", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    {
        Base window;
        EXPECT_TRUE(window.SubclassWindow(handle));
        EXPECT_FALSE(Base().SubclassWindow(handle));
        EXPECT_EQ(SendMessageW(handle, kAsk, 1, 2), 3);
        EXPECT_EQ(window.UnsubclassWindow(), handle);
        EXPECT_EQ(SendMessageW(handle, kAsk, 1, 2), 0);
        EXPECT_TRUE(window.Attach(handle));
        EXPECT_EQ(SendMessageW(handle, kAsk, 1, 2), 0);
        EXPECT_EQ(window.Detach(), handle);
    }
    auto* const temporary = CWnd::FromHandle(handle);
    EXPECT_EQ(temporary->m_hWnd, handle);
    EXPECT_EQ(CWnd::FromHandle(handle), temporary);
    CWnd::DeleteTempMap();
    EXPECT_TRUE(IsWindow(handle));
    EXPECT_EQ(CWnd::FromHandle(nullptr), nullptr);
    DestroyWindow(handle);
}

TEST(Wnd, TakesItsWindowAlong) {
    HWND handle = nullptr;
    {
        Base window;
        window.CreateEx(0, u"STATIC", u"", 0, kRect, nullptr, 0);
        handle = window;
    }
    EXPECT_FALSE(IsWindow(handle));
}

TEST(Wnd, IsAskedBeforeTranslationUpToTheStop) {
    Derived parent;
    Base child;
    parent.CreateEx(0, u"STATIC", u"", 0, kRect, nullptr, 0);
    child.Create(u"STATIC", u"", 0, kRect, &parent, 2);
    EXPECT_EQ(parent.GetDlgItem(2), &child);
    EXPECT_EQ(child.GetParent(), &parent);
    MSG message{child, kAsk + 1, 0, 0, 0, {}};
    EXPECT_TRUE(CWnd::WalkPreTranslateTree(parent, &message));
    EXPECT_FALSE(CWnd::WalkPreTranslateTree(child, &message));
    message.message = kAsk;
    EXPECT_FALSE(CWnd::WalkPreTranslateTree(nullptr, &message));
}

TEST(RuntimeClasses, KnowTheirBasesAndMakeObjects) {
    const Derived derived;
    EXPECT_TRUE(derived.IsKindOf(RUNTIME_CLASS(Base)));
    EXPECT_TRUE(derived.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(CWnd().IsKindOf(RUNTIME_CLASS(Base)));
    const std::unique_ptr<CObject> made(RUNTIME_CLASS(Base)->CreateObject());
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(CWnd)));
    EXPECT_EQ(RUNTIME_CLASS(CCmdTarget)->CreateObject(), nullptr);
    EXPECT_STREQ(RUNTIME_CLASS(Base)->m_lpszClassName, "Base");
}

}  // namespace
