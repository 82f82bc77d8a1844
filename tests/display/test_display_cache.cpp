// The line cache's age rules, the display queue and the display timer's drain step.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "app/SystemCoordinator.h"
#include "display/DisplayDrain.h"
#include "display/DisplayQueue.h"
#include "display/SonarDataCache.h"
#include "display/SonarDataCacheSet.h"

namespace halvo {
namespace {

SonarDataCacheElement Line(int id, int display = 0) {
    SonarDataCacheElement e(4);
    e.bottomSample = id;
    e.displayIndex = display;
    return e;
}

TEST(SonarDataCache, OffersAllButTheTenOldestSlots) {
    struct {
        int capacity;
        int lastAge;  // -1: nothing offered
    } cases[] = {{200, 189}, {11, 0}, {10, -1}, {3, -1}, {0, -1}};
    for (const auto& c : cases) {
        SonarDataCache cache(c.capacity);
        for (int i = 0; i < c.capacity + 5; ++i) cache.Add(Line(i));
        for (int age = 0; age <= c.capacity; ++age) {
            const SonarDataCacheElement* e = cache.Get(age);
            if (age <= c.lastAge) {
                ASSERT_NE(e, nullptr) << c.capacity << " age " << age;
                EXPECT_EQ(e->bottomSample, c.capacity + 4 - age);
            } else {
                EXPECT_EQ(e, nullptr) << c.capacity << " age " << age;
            }
        }
        EXPECT_EQ(cache.Total(), c.capacity + 5);
    }
}

TEST(SonarDataCache, KeepsCopiesAndEmptiesOnResize) {
    SonarDataCache cache(20);
    EXPECT_EQ(cache.Get(0), nullptr);
    SonarDataCacheElement e = Line(7);
    cache.Add(e);
    e.pixels[0] = 99;
    ASSERT_NE(cache.Get(0), nullptr);
    EXPECT_EQ(cache.Get(0)->pixels[0], 0);
    EXPECT_EQ(cache.Get(1), nullptr);  // filled slots only
    cache.Resize(30);
    EXPECT_EQ(cache.Get(0), nullptr);
    EXPECT_EQ(cache.Total(), 1);
    cache.Add(Line(8));
    EXPECT_EQ(cache.Get(0)->bottomSample, 8);
    EXPECT_EQ(cache.Total(), 2);
}

TEST(SonarDataCache, ElementsCountTheirLifetimes) {
    const auto made = SonarDataCacheElement::Made();
    const auto destroyed = SonarDataCacheElement::Destroyed();
    {
        SonarDataCacheElement a(0);
        EXPECT_TRUE(a.pixels.empty());
        SonarDataCacheElement b = Line(1);
        SonarDataCacheElement c(b);
        EXPECT_EQ(c.pixels.size(), 4u);
    }
    EXPECT_EQ(SonarDataCacheElement::Made() - made, 3u);
    EXPECT_EQ(SonarDataCacheElement::Destroyed() - destroyed, 3u);
}

TEST(SonarDataCacheSet, MakesCachesOnFirstUseAndRejectsBadIndices) {
    SonarDataCacheSet set(50);
    EXPECT_EQ(set.Cache(3), nullptr);
    EXPECT_TRUE(set.Add(Line(1, 3)));
    ASSERT_NE(set.Cache(3), nullptr);
    EXPECT_EQ(set.Cache(3)->Capacity(), 50);
    EXPECT_FALSE(set.Add(Line(1, 10)));
    EXPECT_FALSE(set.Add(Line(1, -1)));
    EXPECT_EQ(set.Cache(10), nullptr);
}

TEST(DisplayQueue, HoldsTwoHundredInOrderAndGivesBackOnFull) {
    DisplayQueue q;
    for (int i = 0; i < 200; ++i) {
        auto e = std::make_unique<SonarDataCacheElement>(Line(i));
        ASSERT_TRUE(q.TryPut(e));
        EXPECT_EQ(e, nullptr);
    }
    auto extra = std::make_unique<SonarDataCacheElement>(Line(200));
    EXPECT_FALSE(q.TryPut(extra));
    ASSERT_NE(extra, nullptr);
    DisplayQueueEntry entry;
    for (int round = 0; round < 3; ++round) {  // around the ring more than once
        for (int i = 0; i < 150; ++i) {
            ASSERT_TRUE(q.Take(entry));
            EXPECT_EQ(entry.element->bottomSample, round * 150 + i);
            auto e = std::make_unique<SonarDataCacheElement>(Line(200 + round * 150 + i));
            ASSERT_TRUE(q.TryPut(e));
        }
    }
    EXPECT_EQ(q.Waiting(), 200u);
}

class RecordingDocument : public DisplayDocumentIF {
  public:
    void OnDisplayNotice(int argument, const SharedLine& line) override {
        if (argument == kStoreElement) {
            caches.Add(line);
        } else {
            ++updates;
        }
    }
    SonarDataCacheSet caches;
    int updates = 0;
};

TEST(DisplayDrain, DeliversEveryElementThenOneUpdate) {
    SystemCoordinator coordinator;
    DisplayQueue q;
    int refreshes = 0;
    DisplayDrain drain(q, coordinator, [&] { ++refreshes; });
    RecordingDocument a, b;
    DisplayDocumentIF* docs[] = {&a, &b};
    for (int i = 0; i < 3; ++i) {
        auto e = std::make_unique<SonarDataCacheElement>(Line(i, i));
        q.TryPut(e);
    }
    EXPECT_EQ(drain.Drain(docs), 3);
    for (RecordingDocument* d : {&a, &b}) {
        EXPECT_EQ(d->updates, 1);
        for (int i = 0; i < 3; ++i) ASSERT_NE(d->caches.Cache(i), nullptr);
    }
    // One line for every document that keeps it, not a copy each.
    EXPECT_EQ(a.caches.Cache(1)->Get(0), b.caches.Cache(1)->Get(0));
    EXPECT_EQ(q.Waiting(), 0u);
    // Nothing waiting: no update, but the status still refreshes.
    EXPECT_EQ(drain.Drain(docs), 0);
    EXPECT_EQ(a.updates, 1);
    EXPECT_EQ(refreshes, 2);
    // The views' timer holds the shared guard: this tick is skipped and nothing is taken.
    auto e = std::make_unique<SonarDataCacheElement>(Line(9));
    q.TryPut(e);
    coordinator.EnterDisplayTimer();
    EXPECT_EQ(drain.Drain(docs), -1);
    EXPECT_EQ(q.Waiting(), 1u);
    coordinator.LeaveDisplayTimer();
    EXPECT_EQ(drain.Drain(docs), 1);
    EXPECT_EQ(coordinator.DisplayTimerDepth(), 0);
}

}  // namespace
}  // namespace halvo
