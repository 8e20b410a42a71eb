// Sticky layout engine on lines and grids of 100 ... 100,000 items.
//
// Beside the production areas run two baselines that follow the obvious steps:
// - ReferenceMagneticLine builds an ordered set of edges for every drop;
// - ResortingFreeLine sorts the whole list after every move.
// The *Speedup benchmarks time a production area against its baseline in the same process
// and report the ratio; MagneticFindSpeedup also checks that both answer identical points.
//
//   ./build/release/bench/bench_sticky --benchmark_min_time=0.05 --benchmark_counters_tabular=true
#include "../tests/Sticky/ReferenceMagneticLine.h"

#include <Util/Sticky/StickyFreeLine.h>
#include <Util/Sticky/StickyGrid.h>
#include <Util/Sticky/StickyLinksSynchronizer.h>
#include <Util/Sticky/StickyMagneticLine.h>
#include <Util/Sticky/StickyMoveController.h>
#include <Util/Sticky/StickyMultiLine.h>
#include <Util/Sticky/StickyOrder.h>

#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QPen>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace {

// A free line whose moves re-sort the whole list.
class ResortingFreeLine : public StickyFreeLine
{
protected:
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override
    {
        if (!contains(item))
            return;
        item->setPos(std::max(origin().x(), point.pos.x()), point.pos.y());
        std::sort(begin(), end(), XOrder());
    }
};

// The free line's drop as a walk from the front, the way it was answered before the bisection.
StickyArea::StickyPoint walkFreeLine(StickyArea& line, const QPointF& pos)
{
    StickyArea::StickyPoint point(&line, QPointF(pos.x(), line.origin().y()), 0, 0);
    for (auto it = line.begin(); it != line.end() && (*it)->scenePos().x() < pos.x(); ++it)
        ++point.index;
    return point;
}

// The grid's drop as the walk over every item, the way it was answered before the row index.
StickyArea::StickyPoint walkGrid(StickyGrid& grid, const QPointF& pos)
{
    StickyArea::StickyPoint point(&grid, grid.origin(), 0, 0);
    double nearest = (point.pos - pos).manhattanLength();
    int i = 0;
    for (auto it = grid.begin(); it != grid.end(); ++it, ++i) {
        const double d = ((*it)->scenePos() - pos).manhattanLength();
        if (d < nearest) {
            nearest = d;
            point.pos = (*it)->scenePos();
            point.index = i;
        }
    }
    return point;
}

// Rectangles of varied widths (some of width 0) on a scene of their own.
struct Items
{
    explicit Items(int n)
    {
        scene.setItemIndexMethod(QGraphicsScene::NoIndex);
        std::mt19937 random(static_cast<unsigned>(n));
        std::uniform_int_distribution<int> width(0, 60);
        for (int i = 0; i < n; ++i) {
            auto* item = new QGraphicsRectItem(0, 0, width(random) < 3 ? 0.0 : width(random) * 1.5, 20);
            item->setPen(Qt::NoPen);
            scene.addItem(item);
            all.append(item);
        }
    }

    QGraphicsScene scene;
    QList<QGraphicsItem*> all;
};

template <typename Area>
void appendAll(Area& area, const QList<QGraphicsItem*>& items, int placeholderEvery = 0)
{
    area.lockUpdate();
    for (int i = 0; i < items.size(); ++i) {
        const bool placeholder = placeholderEvery > 0 && i % placeholderEvery == placeholderEvery - 1;
        area.insertItem(StickyArea::StickyPoint(&area, QPointF(0, 0), 0, -1), items.at(i), placeholder);
    }
    area.unlockUpdate();
    area.updateLayout(nullptr);
}

struct MagneticWorld
{
    explicit MagneticWorld(int n) : items(n)
    {
        appendAll(line, items.all, 97);
        appendAll(reference, items.all, 97);
    }
    Items items;
    StickyMagneticLine line;
    ReferenceMagneticLine reference;
};

// The same magnetic line twice, reserved for the comparison: the drag benchmarks reorder the
// line of MagneticWorld and not its reference.
struct MagneticPair : MagneticWorld
{
    using MagneticWorld::MagneticWorld;
};

// The free line is filled left to right, as the items' x are drawn in increasing order.
template <typename Line>
struct FreeWorld
{
    explicit FreeWorld(int n) : items(n)
    {
        std::mt19937 random(7);
        std::vector<double> xs(static_cast<size_t>(n));
        std::uniform_real_distribution<double> x(0.0, 30.0 * n);
        for (double& v : xs)
            v = x(random);
        std::sort(xs.begin(), xs.end());
        for (int i = 0; i < n; ++i)
            line.insertItem(StickyArea::StickyPoint(&line, QPointF(xs[static_cast<size_t>(i)], 0), 0, i),
                            items.all.at(i), false);
        line.updateLayout(nullptr);
    }
    Items items;
    Line line;
};

struct GridWorld
{
    explicit GridWorld(int n) : items(n)
    {
        grid.setWidth(4000);
        grid.setSpacing(QPointF(4, 4));
        appendAll(grid, items.all);
    }
    Items items;
    StickyGrid grid;
};

// One world per kind and size, built on first use and kept for every benchmark of that size.
template <typename World>
World& world(int n)
{
    static std::map<int, std::unique_ptr<World>> worlds;
    auto& slot = worlds[n];
    if (!slot)
        slot = std::make_unique<World>(n);
    return *slot;
}

// Drop positions over the whole extent of an area and a little beyond.
std::vector<QPointF> drops(double left, double right, double top, double bottom, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> x(left - 50.0, right + 50.0);
    std::uniform_real_distribution<double> y(top - 50.0, bottom + 50.0);
    std::vector<QPointF> result(4096);
    for (QPointF& p : result)
        p = QPointF(x(random), y(random));
    return result;
}

std::vector<QPointF> lineDrops(StickyArea& line) { return drops(line.origin().x(), line.width(), 0, 0, 11); }

std::vector<QPointF> gridDrops(StickyGrid& grid)
{
    const QRectF r = grid.rect();
    return drops(r.left(), r.right(), r.top(), r.bottom(), 13);
}

// --- findStickyPoint, single and group form ------------------------------------------------

template <typename Area>
void findSingle(benchmark::State& state, Area& area, const std::vector<QPointF>& at, QGraphicsItem* item)
{
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(area.findStickyPoint(at[i++ % at.size()], item));
    }
    state.SetItemsProcessed(state.iterations());
}

template <typename Area>
void findGroup(benchmark::State& state, Area& area, const std::vector<QPointF>& at, const QList<QGraphicsItem*>& all)
{
    const QList<QGraphicsItem*> group{all.at(1), all.at(2), all.at(3)};
    size_t i = 0;
    StickyArea& base = area;
    for (auto _ : state) {
        benchmark::DoNotOptimize(base.findStickyPoint(at[i++ % at.size()], group.at(1), group));
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_MagneticFind(benchmark::State& state)
{
    auto& w = world<MagneticWorld>(static_cast<int>(state.range(0)));
    findSingle(state, w.line, lineDrops(w.line), w.items.all.at(0));
}

void BM_MagneticFindGroup(benchmark::State& state)
{
    auto& w = world<MagneticWorld>(static_cast<int>(state.range(0)));
    findGroup(state, w.line, lineDrops(w.line), w.items.all);
}

void BM_MagneticFindReference(benchmark::State& state)
{
    auto& w = world<MagneticWorld>(static_cast<int>(state.range(0)));
    findSingle(state, w.reference, lineDrops(w.line), w.items.all.at(0));
}

void BM_FreeFind(benchmark::State& state)
{
    auto& w = world<FreeWorld<StickyFreeLine>>(static_cast<int>(state.range(0)));
    findSingle(state, w.line, lineDrops(w.line), w.items.all.at(0));
}

void BM_FreeFindGroup(benchmark::State& state)
{
    auto& w = world<FreeWorld<StickyFreeLine>>(static_cast<int>(state.range(0)));
    findGroup(state, w.line, lineDrops(w.line), w.items.all);
}

void BM_GridFind(benchmark::State& state)
{
    auto& w = world<GridWorld>(static_cast<int>(state.range(0)));
    findSingle(state, w.grid, gridDrops(w.grid), w.items.all.at(0));
}

void BM_GridFindGroup(benchmark::State& state)
{
    auto& w = world<GridWorld>(static_cast<int>(state.range(0)));
    findGroup(state, w.grid, gridDrops(w.grid), w.items.all);
}

// --- updateLayout(nullptr) -----------------------------------------------------------------

void layoutLoop(benchmark::State& state, StickyArea& area)
{
    for (auto _ : state)
        area.updateLayout(nullptr);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(area.count()));
}

void BM_MagneticUpdateLayout(benchmark::State& state)
{
    layoutLoop(state, world<MagneticWorld>(static_cast<int>(state.range(0))).line);
}

void BM_FreeUpdateLayout(benchmark::State& state)
{
    layoutLoop(state, world<FreeWorld<StickyFreeLine>>(static_cast<int>(state.range(0))).line);
}

void BM_GridUpdateLayout(benchmark::State& state)
{
    layoutLoop(state, world<GridWorld>(static_cast<int>(state.range(0))).grid);
}

// --- one drag step: findStickyPoint + moveItem + updateLayout ------------------------------

void dragLoop(benchmark::State& state, StickyArea& area, const QList<QGraphicsItem*>& all,
              const std::vector<QPointF>& at)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> pick(0, all.size() - 1);
    size_t i = 0;
    for (auto _ : state) {
        QGraphicsItem* item = all.at(pick(random));
        const StickyArea::StickyPoint point = area.findStickyPoint(at[i++ % at.size()], item);
        area.moveItem(point, item);
        area.updateLayout(item);
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_MagneticDragStep(benchmark::State& state)
{
    auto& w = world<MagneticWorld>(static_cast<int>(state.range(0)));
    dragLoop(state, w.line, w.items.all, lineDrops(w.line));
}

void BM_FreeDragStep(benchmark::State& state)
{
    auto& w = world<FreeWorld<StickyFreeLine>>(static_cast<int>(state.range(0)));
    dragLoop(state, w.line, w.items.all, lineDrops(w.line));
}

void BM_GridDragStep(benchmark::State& state)
{
    auto& w = world<GridWorld>(static_cast<int>(state.range(0)));
    dragLoop(state, w.grid, w.items.all, gridDrops(w.grid));
}

// --- production against baseline, same process -------------------------------------------

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// Times the production answer and a reference on the same drops (a tenth of them exactly on
// an item) and checks that both answer identical points.
template <typename Fast, typename Reference>
void compareFinds(benchmark::State& state, std::vector<QPointF> at, const QList<QGraphicsItem*>& all, Fast fast,
                  Reference reference)
{
    for (size_t i = 0; i < at.size(); i += 10)
        at[i] = all.at(static_cast<int>(i) % all.size())->scenePos();
    const size_t queries = all.size() >= 100000 ? 64 : 512;
    double fastSeconds = 0.0;
    double referenceSeconds = 0.0;
    for (auto _ : state) {
        std::vector<StickyArea::StickyPoint> fastPoints;
        std::vector<StickyArea::StickyPoint> referencePoints;
        auto start = Clock::now();
        for (size_t i = 0; i < queries; ++i)
            fastPoints.push_back(fast(at[i]));
        fastSeconds += secondsSince(start);
        start = Clock::now();
        for (size_t i = 0; i < queries; ++i)
            referencePoints.push_back(reference(at[i]));
        referenceSeconds += secondsSince(start);
        for (size_t i = 0; i < queries; ++i) {
            if (fastPoints[i].pos != referencePoints[i].pos || fastPoints[i].index != referencePoints[i].index
                || fastPoints[i].level != referencePoints[i].level) {
                state.SkipWithError("the area and its reference disagree on a drop");
                return;
            }
        }
    }
    const double n = static_cast<double>(state.iterations() * queries);
    state.counters["fast_us"] = 1e6 * fastSeconds / n;
    state.counters["reference_us"] = 1e6 * referenceSeconds / n;
    state.counters["speedup"] = referenceSeconds / fastSeconds;
    state.counters["drops_checked"] = n;
}

// The magnetic line against the literal edge-set rebuild.
void BM_MagneticFindSpeedup(benchmark::State& state)
{
    auto& w = world<MagneticPair>(static_cast<int>(state.range(0)));
    compareFinds(
        state, lineDrops(w.line), w.items.all, [&w](const QPointF& p) { return w.line.findStickyPoint(p, nullptr); },
        [&w](const QPointF& p) { return w.reference.findStickyPoint(p, nullptr); });
}

// 10,000 random moves on a free line kept sorted incrementally and on one that re-sorts.
void BM_FreeMoveSpeedup(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    auto& incremental = world<FreeWorld<StickyFreeLine>>(n);
    auto& resorting = world<FreeWorld<ResortingFreeLine>>(n);
    const int moves = 10000;
    double fast = 0.0;
    double baseline = 0.0;
    for (auto _ : state) {
        for (int pass = 0; pass < 2; ++pass) {
            StickyArea& line = pass == 0 ? static_cast<StickyArea&>(incremental.line) : resorting.line;
            const QList<QGraphicsItem*>& all = pass == 0 ? incremental.items.all : resorting.items.all;
            std::mt19937 random(5);
            std::uniform_int_distribution<int> pick(0, n - 1);
            std::uniform_real_distribution<double> x(0.0, 30.0 * n);
            const auto start = Clock::now();
            for (int m = 0; m < moves; ++m)
                line.moveItem(StickyArea::StickyPoint(&line, QPointF(x(random), 0)), all.at(pick(random)));
            (pass == 0 ? fast : baseline) += secondsSince(start);
            if (!std::is_sorted(line.begin(), line.end(), XOrder())) {
                state.SkipWithError("a free line is out of order after the moves");
                return;
            }
        }
    }
    state.counters["incremental_ms"] = 1e3 * fast / static_cast<double>(state.iterations());
    state.counters["resort_ms"] = 1e3 * baseline / static_cast<double>(state.iterations());
    state.counters["speedup"] = baseline / fast;
}

// The free line's bisection against the walk from the front.
void BM_FreeFindSpeedup(benchmark::State& state)
{
    auto& w = world<FreeWorld<StickyFreeLine>>(static_cast<int>(state.range(0)));
    compareFinds(
        state, lineDrops(w.line), w.items.all, [&w](const QPointF& p) { return w.line.findStickyPoint(p, nullptr); },
        [&w](const QPointF& p) { return walkFreeLine(w.line, p); });
}

// The grid's row index against the walk over every item.
void BM_GridFindSpeedup(benchmark::State& state)
{
    auto& w = world<GridWorld>(static_cast<int>(state.range(0)));
    compareFinds(
        state, gridDrops(w.grid), w.items.all, [&w](const QPointF& p) { return w.grid.findStickyPoint(p, nullptr); },
        [&w](const QPointF& p) { return walkGrid(w.grid, p); });
}

// --- the timeline: 8 levels, 1,000 links, one controller -----------------------------------

struct TimelineWorld
{
    explicit TimelineWorld(int n) : items(n)
    {
        line.setPlaceholderNeeded(true);
        std::mt19937 random(9);
        std::uniform_real_distribution<double> x(0.0, 30.0 * n / 8);
        line.lockUpdate();
        for (int level = 0; level < 8; ++level)
            line.insertItem(StickyArea::StickyPoint(&line, QPointF(0, 0), -1 - level), items.all.at(level), false);
        for (int i = 8; i < n; ++i)
            line.insertItem(StickyArea::StickyPoint(&line, QPointF(x(random), 0), i % 8), items.all.at(i), false);
        line.unlockUpdate();
        line.updateLayout(nullptr);
        sync.watch(&line);
        const int stride = std::max(2, n / 1000);
        for (int i = 0; i < 1000 && i * stride + 1 < n; ++i)
            sync.link(items.all.at(i * stride), items.all.at(i * stride + 1));
        controller.addArea(&line);
        controller.setSynchronizer(&sync);
    }
    Items items;
    StickyMultiLine line;
    StickyLinksSynchronizer sync;
    StickyMoveController controller;
};

// One mouse move of a drag of a linked clip: the target changes on every step (another x or
// level), the placeholder moves and the level lays it out.
void BM_TimelineDragStep(benchmark::State& state)
{
    auto& w = world<TimelineWorld>(static_cast<int>(state.range(0)));
    QGraphicsItem* grabbed = w.items.all.at(0);
    const std::vector<QPointF> at = drops(0, 30.0 * state.range(0) / 8, 0, 8 * 48, 17);
    w.controller.startDrag(grabbed, {grabbed}, grabbed->scenePos());
    size_t i = 0;
    for (auto _ : state)
        w.controller.dragProcess(at[i++ % at.size()]);
    w.controller.abortDrag();
    state.SetItemsProcessed(state.iterations());
}

// A mouse move that keeps the target: nothing is laid out.
void BM_TimelineDragStepSameTarget(benchmark::State& state)
{
    auto& w = world<TimelineWorld>(static_cast<int>(state.range(0)));
    QGraphicsItem* grabbed = w.items.all.at(0);
    w.controller.startDrag(grabbed, {grabbed}, grabbed->scenePos());
    w.controller.dragProcess(QPointF(500, 60));
    int y = 0;
    for (auto _ : state)
        w.controller.dragProcess(QPointF(500, 55 + (y++ % 20)));
    w.controller.abortDrag();
    state.SetItemsProcessed(state.iterations());
}

void BM_TimelineFind(benchmark::State& state)
{
    auto& w = world<TimelineWorld>(static_cast<int>(state.range(0)));
    findSingle(state, w.line, drops(0, 30.0 * state.range(0) / 8, 0, 8 * 48, 19), w.items.all.at(0));
}

void BM_TimelineUpdateLayout(benchmark::State& state)
{
    layoutLoop(state, world<TimelineWorld>(static_cast<int>(state.range(0))).line);
}

void sizes(benchmark::internal::Benchmark* b)
{
    for (int n : {100, 1000, 10000, 100000})
        b->Arg(n);
    b->Unit(benchmark::kMicrosecond);
}

} // namespace

BENCHMARK(BM_MagneticFind)->Apply(sizes);
BENCHMARK(BM_MagneticFindGroup)->Apply(sizes);
BENCHMARK(BM_MagneticFindReference)->Apply(sizes);
BENCHMARK(BM_FreeFind)->Apply(sizes);
BENCHMARK(BM_FreeFindGroup)->Apply(sizes);
BENCHMARK(BM_GridFind)->Apply(sizes);
BENCHMARK(BM_GridFindGroup)->Apply(sizes);
BENCHMARK(BM_MagneticUpdateLayout)->Apply(sizes);
BENCHMARK(BM_FreeUpdateLayout)->Apply(sizes);
BENCHMARK(BM_GridUpdateLayout)->Apply(sizes);
BENCHMARK(BM_MagneticDragStep)->Apply(sizes);
BENCHMARK(BM_FreeDragStep)->Apply(sizes);
BENCHMARK(BM_GridDragStep)->Apply(sizes);
BENCHMARK(BM_MagneticFindSpeedup)->Apply(sizes)->Iterations(2);
BENCHMARK(BM_FreeFindSpeedup)->Apply(sizes)->Iterations(2);
BENCHMARK(BM_GridFindSpeedup)->Apply(sizes)->Iterations(2);
BENCHMARK(BM_TimelineFind)->Apply(sizes);
BENCHMARK(BM_TimelineUpdateLayout)->Apply(sizes);
BENCHMARK(BM_TimelineDragStep)->Apply(sizes);
BENCHMARK(BM_TimelineDragStepSameTarget)->Apply(sizes);
BENCHMARK(BM_FreeMoveSpeedup)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);
