#pragma once
// One builder window per test suite, shown under Wine's display: taking a shown window down costs Wine two
// seconds under a display without a window manager, so the tests of a suite share it, in the order they are
// written, and each sets up the state it looks at.

#include "core/files.h"
#include "core/paths.h"
#include "tests/support/test_support.h"
#include "ui/win32/app.h"

#include <gtest/gtest.h>

namespace nv::ui::win {

class BuilderWindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        // A window closed earlier in this process left its WM_QUIT behind; a dialog's modal loop would end on
        // it.
        MSG quit;
        while (PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) {
        }
        DeleteFileW(templatePath().c_str());
        createFolders(pathParent(templatePath()));
        app_ = new BuilderApp;
        app_->setTemplatePath(templatePath());
        app_->session().setPath(L""); // a fresh window every run, whatever earlier runs left behind
        created_ = app_->createWindow();
    }
    static void TearDownTestSuite() {
        delete app_;
        app_ = nullptr;
        DeleteFileW(templatePath().c_str());
    }
    void SetUp() override {
        ASSERT_TRUE(created_);
        ASSERT_TRUE(IsWindow(app_->hwnd()));
        DeleteFileW(templatePath().c_str());
        app_->session().setPath(L"");
        setSigning(false);
    }

    // Apart from the real template that the patcher's tests copy beside the test programs.
    static std::wstring templatePath() { return pathJoin(exeFolder(), L"ui_window\\Norvane.Template.exe"); }
    static std::wstring samplePath() { return pathJoin(test::testDataDir(), L"gece-mavisi"); }
    void loadSample() { ASSERT_TRUE(app_->loadSkin(samplePath(), false)) << test::fsPath(app_->status()); }
    bool visible(int id) const { return IsWindowVisible(app_->fields().window(id)) != 0; }
    bool enabled(int id) const { return IsWindowEnabled(app_->fields().window(id)) != 0; }
    void setSigning(bool on) {
        if (app_->recipe().signing.enabled != on) app_->runCommand(kItemToggleSigning, 0);
    }
    void leaveField(int id) {
        SendMessageW(app_->hwnd(), WM_COMMAND, MAKEWPARAM(id, EN_KILLFOCUS),
                     reinterpret_cast<LPARAM>(app_->fields().window(id)));
    }

    static inline BuilderApp* app_ = nullptr;
    static inline bool created_ = false;
};

} // namespace nv::ui::win
