#pragma once
// An extension's settings page in the "Status And Control" sheet: the page itself, and a turn
// at every pass of the sheet's timer after the fixed pages have been served (under the sheet's
// exception guard).

namespace halvo {

class CfgSheet;
class SheetPage;

class CfgExtension {
  public:
    virtual ~CfgExtension() = default;
    // The page that carries this hook; the sheet takes it.
    virtual SheetPage* GetPage() = 0;
    virtual void OnSheetTimer(int zero, CfgSheet& sheet) {
        static_cast<void>(zero), static_cast<void>(sheet);
    }
};

}  // namespace halvo
