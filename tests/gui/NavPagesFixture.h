#pragma once
// A whole System on fake clocks in a scratch folder, with the network, navigation and devices
// pages in a control sheet and a setup sheet, as the program builds them. The links stay off
// until a test turns them on, and then point at this machine only.

#include <QCheckBox>
#include <memory>

#include "GuiTestApp.h"
#include "app/TempWorkDir.h"
#include "gui/pages/NavigationPages.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/SetupSheet.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "system/System.h"

namespace halvo::test {

class NavPagesTest : public TempWorkDir {
  protected:
    void SetUp() override {
        TempWorkDir::SetUp();
        GuiApp();
        WriteFile("HalvoConfig.ini",
                  "[HalvoConfig]\nInterfaceUnitAddress=127.0.0.1\nTowedUnitAddress=127.0.0.1\n");
        // The tick count as time base, so the fake tick moves the program clock.
        WriteFile("HalvoDefaults.Hni", "[Main]\nTimerSource=0\n[Message]\nEnableNetworkIO=0\n");
        ticks_.SetTick(100000);
        clock_.SetNow(1700000000, 250);
        system_ = std::make_unique<System>(System::Platform{ticks_, clock_, &operator_});
        system_->Startup();
        context_ = std::make_unique<SheetContext>(
            SheetContext{system_->Coordinator(), operator_, enables_});
        cfg_ = std::make_unique<CfgSheet>(*context_);
        setup_ = std::make_unique<SetupSheet>(*context_);
        AddNavigationPages(*cfg_, setup_.get(), *system_, *context_);
        cfg_->Timer().stop();
        setup_->Timer().stop();
    }
    void TearDown() override {
        cfg_.reset();
        setup_.reset();
        system_->Ending(false);
        system_.reset();
        TempWorkDir::TearDown();
    }

    // Brings a page into view, as the operator's click on its tab does.
    template <class Page = SheetPage>
    Page* Show(PageSheet& sheet, const char* caption) {
        auto* page = dynamic_cast<Page*>(sheet.FindPage(caption));
        EXPECT_NE(page, nullptr) << caption;
        if (page == nullptr) return nullptr;
        sheet.show();
        sheet.ShowPage(page);
        PumpUntil([&] { return page->isVisible(); }, 2000);
        return page;
    }
    // Ticks the sheet until done() or 3 s.
    static bool TickUntil(PageSheet& sheet, const std::function<bool()>& done) {
        return PumpUntil(
            [&] {
                sheet.TimerPass();
                return done();
            },
            3000);
    }

    FakeTickSource ticks_;
    FakeSystemClock clock_;
    ScriptedOperator operator_;
    EnableTable enables_;
    std::unique_ptr<System> system_;
    std::unique_ptr<SheetContext> context_;
    std::unique_ptr<CfgSheet> cfg_;
    std::unique_ptr<SetupSheet> setup_;
};

}  // namespace halvo::test
