#include <gtest/gtest.h>

#include <thread>

#include "core/MessageQueue.h"

namespace halvo {

TEST(MessageQueue, RingFillsWrapsAndReportsDepth) {
    auto q = MessageQueue::Create(true, 3);
    ASSERT_TRUE(q);
    EXPECT_EQ(MessageQueue::Post(nullptr, 1, 2, 3), MessageQueue::kNoQueue);
    EXPECT_EQ(MessageQueue::Create(true, 0), nullptr);
    for (std::uintptr_t round = 0; round < 5; ++round) {
        for (std::uintptr_t i = 0; i < 3; ++i)
            ASSERT_EQ(q->Post(round, i, 0), MessageQueue::kStored);
        EXPECT_EQ(q->Post(9, 9, 9), MessageQueue::kFull);
        EXPECT_EQ(q->Depth(), 3u);
        for (std::uintptr_t i = 0; i < 3; ++i) {
            const QueueEntry* e = q->Peek();
            ASSERT_NE(e, nullptr);
            EXPECT_EQ(e->first, round);
            EXPECT_EQ(e->second, i);
            q->Pop(0);
        }
        EXPECT_EQ(q->Peek(), nullptr);
    }
    EXPECT_EQ(q->Wait(0), 0);
}

TEST(MessageQueue, RepliesResultsAndWaiting) {
    auto q = MessageQueue::Create(true, 4);
    auto replies = MessageQueue::Create(true, 4);
    ASSERT_EQ(q->PostWithReply(1, 2, 33, replies.get(), 77), MessageQueue::kStored);
    q->Pop(5);
    const QueueEntry* r = replies->Peek();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->first, 5u);
    EXPECT_EQ(r->second, 33u);
    EXPECT_EQ(r->third, 77u);

    // PostAndWait blocks until the consumer pops and hands back its result.
    std::thread consumer([&] {
        ASSERT_EQ(q->Wait(5000), 1);
        q->Pop(42);
    });
    EXPECT_EQ(q->PostAndWait(1, 2, 3), 42);
    consumer.join();
    EXPECT_EQ(MessageQueue::PostAndWait(nullptr, 1, 2, 3), MessageQueue::kNoQueue);
}

}  // namespace halvo
