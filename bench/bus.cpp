// The bus against a Qt signal over direct connections, the cost of subscriptions as their number
// grows, and a committed change of an owned record observed by ten views.
//
//   ./build/release/bench/bench_bus --benchmark_counters_tabular=true
//
// Times are per batch of 1,000 messages (per round for subscriptions); "bus_ns" and "qt_ns" are per
// message. Counters: "ratio" is bus time / Qt time for the same number of receivers (goal <= 1.0 at 10);
// "nobody/qt10" is the cost of a publish reaching nobody over that of a Qt signal to 10 slots
// (goal < 0.1); "scaling" is the per-object subscription cost at 100,000 objects over that at
// 1,000 (goal <= 1.5).

#include "common/ThreadClock.h"

#include <PubSub/PubSub.h>
#include <Util/Preview/ObjectView.h>

#include <QObject>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Record : virtual PubSub::Object
{
};

struct Tick : PubSub::Details::MessageBase
{
    explicit Tick(const Record* r) : MessageBase(r) {}
};

struct Lonely : PubSub::Details::MessageBase
{
    explicit Lonely(const Record* r) : MessageBase(r) {}
};

class Counter : public PubSub::Subscriber<Tick>, public PubSub::Subscriber<Lonely>
{
public:
    void notify(const Tick&) override { benchmark::DoNotOptimize(++count); }
    void notify(const Lonely&) override { benchmark::DoNotOptimize(++count); }
    long count = 0;
};

class Sender : public PubSub::Publisher<Tick, Lonely>
{
};

} // namespace

class QtEmitter : public QObject
{
    Q_OBJECT
signals:
    void tick();
};

class QtReceiver : public QObject
{
    Q_OBJECT
public slots:
    void onTick() { benchmark::DoNotOptimize(++count); }

public:
    long count = 0;
};

namespace {

constexpr int Batch = 1000;

double busBatch(const Sender& sender, const Record& record)
{
    const auto start = Clock::now();
    for (int i = 0; i < Batch; ++i)
        sender.publish(Tick(&record));
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double qtBatch(QtEmitter& emitter)
{
    const auto start = Clock::now();
    for (int i = 0; i < Batch; ++i)
        emit emitter.tick();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// One message to N subscribers of one object, against one signal to N slots.
void BM_DeliverVsQtSignal(benchmark::State& state)
{
    const int n = int(state.range(0));
    Record record;
    Sender sender;
    std::vector<std::unique_ptr<Counter>> counters;
    QtEmitter emitter;
    std::vector<std::unique_ptr<QtReceiver>> receivers;
    for (int i = 0; i < n; ++i) {
        counters.push_back(std::make_unique<Counter>());
        counters.back()->subscribe(&record);
        receivers.push_back(std::make_unique<QtReceiver>());
        QObject::connect(&emitter, &QtEmitter::tick, receivers.back().get(), &QtReceiver::onTick, Qt::DirectConnection);
    }
    double bus = 0, qt = 0;
    for (auto _ : state) {
        const double b = busBatch(sender, record);
        qt += qtBatch(emitter);
        bus += b;
        state.SetIterationTime(b);
    }
    state.counters["bus_ns"] = bus / double(state.iterations()) / Batch * 1e9;
    state.counters["qt_ns"] = qt / double(state.iterations()) / Batch * 1e9;
    state.counters["ratio"] = bus / qt;
}
BENCHMARK(BM_DeliverVsQtSignal)->Arg(1)->Arg(10)->Arg(100)->UseManualTime();

// A publish to an object nobody subscribes to (others are subscribed to other objects), and one
// of a message type nobody subscribes to at all, against a Qt signal to 10 slots.
void BM_PublishToNobody(benchmark::State& state)
{
    Record watched, unwatched;
    Sender sender;
    Counter counter;
    counter.subscribe(&watched);
    QtEmitter emitter;
    std::vector<std::unique_ptr<QtReceiver>> receivers;
    for (int i = 0; i < 10; ++i) {
        receivers.push_back(std::make_unique<QtReceiver>());
        QObject::connect(&emitter, &QtEmitter::tick, receivers.back().get(), &QtReceiver::onTick, Qt::DirectConnection);
    }
    const bool unknownType = state.range(0) != 0;
    counter.unsubscribe(&watched);
    if (!unknownType)
        counter.subscribe(&watched); // the type has subscribers, just not of this object
    double bus = 0, qt = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < Batch; ++i) {
            if (unknownType)
                sender.publish(Lonely(&unwatched));
            else
                sender.publish(Tick(&unwatched));
        }
        const double b = std::chrono::duration<double>(Clock::now() - start).count();
        qt += qtBatch(emitter);
        bus += b;
        state.SetIterationTime(b);
    }
    state.counters["bus_ns"] = bus / double(state.iterations()) / Batch * 1e9;
    state.SetLabel(unknownType ? "type nobody subscribes to" : "object nobody subscribes to");
    state.counters["nobody/qt10"] = bus / qt;
}
BENCHMARK(BM_PublishToNobody)->Arg(0)->Arg(1)->UseManualTime();

// Subscribing and unsubscribing objects, per object, with 100,000 objects against 1,000 (the same
// total number of objects handled), both measured in each iteration. "warm": the subscriber has
// held that many subscriptions before, so its own set does not grow; "cold": a new subscriber
// each round, whose set grows from empty (and touches fresh memory) as it subscribes. The
// dispatcher's object table keeps its size between rounds in both: every round adds and drops
// all of its objects there.
// Thread CPU time: the machine may be shared, and time spent descheduled is nobody's cost here.
using Bench::threadSeconds;

double subscriptionRound(Counter& counter, const std::vector<Record>& records, std::size_t count)
{
    const double start = threadSeconds();
    for (std::size_t i = 0; i < count; ++i)
        counter.subscribe(&records[i]);
    for (std::size_t i = 0; i < count; ++i)
        counter.unsubscribe(&records[i]);
    return threadSeconds() - start;
}

double subscriptionCost(const std::vector<Record>& records, std::size_t count, int rounds, bool warm)
{
    double total = 0;
    Counter kept;
    if (warm)
        subscriptionRound(kept, records, count);
    for (int round = 0; round < rounds; ++round) {
        Counter fresh;
        total += subscriptionRound(warm ? kept : fresh, records, count);
    }
    return total / double(count) / rounds;
}

void BM_SubscriptionScaling(benchmark::State& state)
{
    const std::size_t large = std::size_t(state.range(0));
    const bool warm = state.range(1) != 0;
    const std::vector<Record> records(large);
    double small = 0, big = 0;
    for (auto _ : state) {
        small += subscriptionCost(records, 1000, int(large / 1000), warm);
        const double b = subscriptionCost(records, large, 1, warm);
        big += b;
        state.SetIterationTime(b * double(large));
    }
    state.SetLabel(warm ? "warm" : "cold");
    state.counters["ns_per_object_1000"] = small / double(state.iterations()) * 1e9;
    state.counters["ns_per_object"] = big / double(state.iterations()) * 1e9;
    state.counters["scaling"] = big / small;
}
BENCHMARK(BM_SubscriptionScaling)->Args({100000, 1})->Args({100000, 0})->UseManualTime()->Unit(benchmark::kMillisecond);

// A committed change of an owned preview record that ten other views observe.
class Observer : public Preview::View<Effect::Object>
{
public:
    explicit Observer(const Preview::Object<Effect::Object>* p) : Preview::View<Effect::Object>(p) {}
    long changes = 0;

protected:
    using Preview::View<Effect::Object>::previewChanged;
    void previewChanged(const Preview::Object<Effect::Object>*) override { benchmark::DoNotOptimize(++changes); }
};

void BM_CommittedChangeTenObservers(benchmark::State& state)
{
    Preview::View<Effect::Object> owner;
    owner.previewChange(nullptr)->width = 1;
    const auto* preview = owner.preview();
    std::vector<std::unique_ptr<Observer>> observers;
    for (int i = 0; i < 10; ++i)
        observers.push_back(std::make_unique<Observer>(preview));
    int width = 0;
    for (auto _ : state)
        owner.previewChange(preview)->width = ++width;
    if (observers.back()->changes != long(state.iterations()))
        state.SkipWithError("an observer missed a change");
}
BENCHMARK(BM_CommittedChangeTenObservers);

} // namespace

#include "bus.moc"
