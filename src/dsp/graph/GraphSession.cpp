#include "dsp/graph/GraphSession.h"

#include "dsp/graph/GraphTaker.h"

namespace halvo {

const GraphTrace* GraphSession::Last(int slot) const {
    const auto& t = traces_[static_cast<std::size_t>(slot & 1)];
    return t ? &*t : nullptr;
}

bool GraphSession::Step(GraphTaker& taker, const GraphValues& values, const GraphUnits& units) {
    bool fresh = false;
    for (int s = 0; s < 2; ++s) {
        GraphSlot& slot = taker.Slot(s);
        if (!slot.Waiting()) continue;
        GraphTrace t = GraphTrace::From(slot);
        slot.Taken();
        if (values.RemoveMean != 0) GraphCompute::RemoveMean(t);
        traces_[static_cast<std::size_t>(s)] = std::move(t);
        fresh = true;
    }
    // Without a second channel only one curve is shown, whatever the slot still holds.
    if (values.Channel2 < 0) traces_[1].reset();
    if (fresh) Redraw(values, units);
    return fresh;
}

void GraphSession::Redraw(const GraphValues& values, const GraphUnits& units) {
    const GraphTrace* first = Last(0);
    const GraphTrace* second = Last(1);
    // A second channel of another length is not drawn beside the first.
    if (first != nullptr && second != nullptr && second->values.size() != first->values.size())
        second = nullptr;
    const PlotState& view = time_.State();
    int curves = 0;
    for (int s = 0; s < 2; ++s) {
        const GraphTrace* t = s == 0 ? first : second;
        curves_[static_cast<std::size_t>(s)] = {};
        spectra_[static_cast<std::size_t>(s)].reset();
        if (t == nullptr) continue;
        curves_[static_cast<std::size_t>(s)] = GraphCompute::TimeCurve(
            *t, values.TimePlotType, s, view.xFracFirst, view.xFracLast, units);
        ++curves;
    }
    time_.Clear();
    freq_.Clear();
    correlation_.reset();
    if (curves == 0) return;
    const GraphTrace& lead = first != nullptr ? *first : *second;
    // The gate: the page's own when set, else the visible part of the time plot.
    if (values.GateSet) {
        gate_ = {values.GateFirst, values.GateLast};
    } else {
        const int n = lead.Samples();
        const int base = lead.startDepth > 0 ? lead.startDepth : 0;
        gate_ = {base + static_cast<int>(view.xFracFirst * n),
                 base + static_cast<int>(view.xFracLast * n)};
    }
    time_.SetCurves(curves);
    int index = 0;
    for (int s = 0; s < 2; ++s) {
        const GraphCurve& c = curves_[static_cast<std::size_t>(s)];
        if (c.y.empty()) continue;
        if (index == 0) time_.SetXRange(c.xFirst, c.xLast);
        time_.SetCurve(index++, c.y);
    }
    const bool norm = values.ScaleFreqByFFTSize != 0;
    if (values.XCorrelate && values.Channel2 >= 0) {
        if (first == nullptr || second == nullptr) return;
        correlation_ =
            compute_.CrossCorrelation(*first, *second, gate_.first, gate_.second, norm, units);
        if (!correlation_) return;
        freq_.SetCurves(1);
        freq_.SetXRange(correlation_->xFirst, correlation_->xLast);
        freq_.SetSpectralScale(1.0f);
        freq_.SetCurve(0, correlation_->y);
        return;
    }
    freq_.SetCurves(curves);
    index = 0;
    for (int s = 0; s < 2; ++s) {
        const GraphTrace* t = s == 0 ? first : second;
        if (t == nullptr) continue;
        auto& spectrum = spectra_[static_cast<std::size_t>(s)];
        spectrum = compute_.SpectrumOf(*t, gate_.first, gate_.second, norm, values.Window);
        if (index == 0) {
            freq_.SetXRange(spectrum->curve.xFirst, spectrum->curve.xLast);
            freq_.SetSpectralScale(spectrum->spectralScale);
        }
        freq_.SetCurve(index++, spectrum->curve.y);
    }
}

GraphCompute::Saved GraphSession::Save(const GraphValues& values) const {
    const GraphTrace* t = Last(0);
    if (t == nullptr) return {false, {}, values.SaveFile};
    return GraphCompute::Save(*t, values.SaveFile, values.GatedOnly, time_.State().xFracFirst,
                              time_.State().xFracLast);
}

}  // namespace halvo
