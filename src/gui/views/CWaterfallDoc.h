#pragma once
// A waterfall document: the caches of the ten displays, made on first use, and the views that
// show them. The display timer's notice 0x40A arrives as a Qt event sent to the document: with
// argument 0 it stores the element in its display's cache, with 1 it updates every view. The
// document has no file; its title is the one the opening gave it.

#include <QEvent>
#include <QObject>
#include <QString>
#include <array>
#include <memory>
#include <vector>

#include "display/DisplayDocumentIF.h"
#include "display/SonarDataCache.h"

namespace halvo {

class WaterfallDocSet;

// A view of a document; told after a burst of lines reached the caches.
class WaterfallDocView {
  public:
    virtual ~WaterfallDocView() = default;
    virtual void OnDocumentUpdate() = 0;
};

// The notice as an event: it carries the shared line.
class DisplayNoticeEvent final : public QEvent {
  public:
    static constexpr QEvent::Type kType =
        static_cast<QEvent::Type>(QEvent::User + DisplayDocumentIF::kNewLinesNotice);
    DisplayNoticeEvent(int argument, SharedLine line)
        : QEvent(kType), argument_(argument), line_(std::move(line)) {}
    int Argument() const { return argument_; }
    const SharedLine& Line() const { return line_; }

  private:
    int argument_;
    SharedLine line_;
};

class CWaterfallDoc final : public QObject, public DisplayDocumentIF {
  public:
    static constexpr int kDisplays = 10;
    static constexpr const char* kOpenTitle = "Subbottom Real-Time Channel 0";

    explicit CWaterfallDoc(WaterfallDocSet& set, QObject* parent = nullptr);
    ~CWaterfallDoc() override;

    // Opening any name gives the same title: the document reads no file.
    void Open(const QString& name);
    void SetTitle(const QString& title) { title_ = title; }
    const QString& Title() const { return title_; }

    // The cache of display i, made with the set's capacity; null outside 0 to 9.
    SonarDataCache* GetCache(int display);
    // Null until made.
    SonarDataCache* ExistingCache(int display) const;

    void AddView(WaterfallDocView* view);
    // The views in the order they joined.
    const std::vector<WaterfallDocView*>& Views() const { return views_; }
    void RemoveView(WaterfallDocView* view);
    void UpdateAllViews();

    // DisplayDocumentIF: sends the notice to this object as an event, synchronously, because
    // the element is gone once the call returns.
    void OnDisplayNotice(int argument, const SharedLine& line) override;

  protected:
    bool event(QEvent* e) override;

  private:
    WaterfallDocSet& set_;
    QString title_;
    std::array<std::unique_ptr<SonarDataCache>, kDisplays> caches_{};
    std::vector<WaterfallDocView*> views_;
};

}  // namespace halvo
