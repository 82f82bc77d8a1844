#include "gui/views/CWaterfallDoc.h"

#include <QCoreApplication>
#include <algorithm>

#include "display/SonarDataCacheElement.h"
#include "gui/views/WaterfallDocSet.h"

namespace halvo {

CWaterfallDoc::CWaterfallDoc(WaterfallDocSet& set, QObject* parent) : QObject(parent), set_(set) {}

CWaterfallDoc::~CWaterfallDoc() {
    for (int f = 0; f < WaterfallDocSet::kMaxDocuments; ++f) {
        if (set_.Document(f) == this) set_.SetDocument(f, nullptr);
    }
}

void CWaterfallDoc::Open(const QString& name) {
    (void)name;
    title_ = kOpenTitle;
}

SonarDataCache* CWaterfallDoc::GetCache(int display) {
    if (display < 0 || display >= kDisplays) return nullptr;
    auto& cache = caches_[static_cast<std::size_t>(display)];
    if (!cache) cache = std::make_unique<SonarDataCache>(set_.CacheSize(display));
    return cache.get();
}

SonarDataCache* CWaterfallDoc::ExistingCache(int display) const {
    if (display < 0 || display >= kDisplays) return nullptr;
    return caches_[static_cast<std::size_t>(display)].get();
}

void CWaterfallDoc::AddView(WaterfallDocView* view) {
    if (view != nullptr && std::find(views_.begin(), views_.end(), view) == views_.end())
        views_.push_back(view);
}

void CWaterfallDoc::RemoveView(WaterfallDocView* view) {
    views_.erase(std::remove(views_.begin(), views_.end(), view), views_.end());
}

void CWaterfallDoc::UpdateAllViews() {
    // A copy: a view may leave the list while it updates.
    const std::vector<WaterfallDocView*> views = views_;
    for (WaterfallDocView* v : views) v->OnDocumentUpdate();
}

void CWaterfallDoc::OnDisplayNotice(int argument, const SharedLine& line) {
    DisplayNoticeEvent e(argument, line);
    QCoreApplication::sendEvent(this, &e);
}

bool CWaterfallDoc::event(QEvent* e) {
    if (e->type() != DisplayNoticeEvent::kType) return QObject::event(e);
    const auto* notice = static_cast<DisplayNoticeEvent*>(e);
    if (notice->Argument() == kStoreElement) {
        if (const SharedLine& line = notice->Line()) {
            // An index outside 0 to 9 finds no cache, and the line is not kept.
            if (SonarDataCache* cache = GetCache(line->displayIndex)) cache->Add(line);
        }
    } else if (notice->Argument() == kUpdateViews) {
        UpdateAllViews();
    }
    return true;
}

}  // namespace halvo
