#include <Core/ProgressController.h>

#include <gtest/gtest.h>

#include <vector>

using Dravik::Core::IProgressController;
using Dravik::Core::ProgressController;

namespace {
// Counts its own destruction, to prove the intrusive count releases it exactly once.
class CountingController : public ProgressController
{
public:
    explicit CountingController(int& destroyed) : m_destroyed(destroyed) {}
    ~CountingController() override { ++m_destroyed; }

private:
    int& m_destroyed;
};
} // namespace

TEST(ProgressController, IsReleasedWhenTheLastIntrusivePointerGoes)
{
    int destroyed = 0;
    {
        boost::intrusive_ptr<IProgressController> a(new CountingController(destroyed));
        IProgressController* raw = a.get();
        {
            boost::intrusive_ptr<IProgressController> b(raw); // counted again from a raw pointer
            a.reset();
            EXPECT_EQ(destroyed, 0);
        }
        EXPECT_EQ(destroyed, 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(ProgressController, ReportsClampedProgressToItsObserverAndStaysCancelled)
{
    std::vector<std::pair<std::int64_t, std::int64_t>> seen;
    boost::intrusive_ptr<ProgressController> p(
        new ProgressController([&](std::int64_t done, std::int64_t total) { seen.emplace_back(done, total); }));
    p->SetRange(100);
    p->SetProgress(40);
    p->SetProgress(250);
    p->SetProgress(-3);
    EXPECT_EQ(seen, (std::vector<std::pair<std::int64_t, std::int64_t>>{{40, 100}, {100, 100}, {0, 100}}));
    EXPECT_EQ(p->GetProgress(), 0);
    p->SetProgress(80);
    p->SetRange(50);
    EXPECT_EQ(p->GetProgress(), 50);
    // Cancellation is sticky.
    EXPECT_FALSE(p->IsCancelled());
    p->Cancel();
    p->SetProgress(1);
    EXPECT_TRUE(p->IsCancelled());
}
