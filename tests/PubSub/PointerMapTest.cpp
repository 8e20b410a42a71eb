#include <PubSub/PointerMap.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

using PubSub::Details::PointerMap;

// Addresses laid out at a given stride, as objects of that size would be.
std::vector<const void*> addresses(std::size_t count, std::size_t stride)
{
    static std::vector<char> arena(1 << 24);
    std::vector<const void*> result;
    for (std::size_t i = 0; i < count; ++i)
        result.push_back(arena.data() + 64 + (i * stride) % (arena.size() - 128));
    return result;
}

// Inserting, finding and erasing in a random order agrees with std::map at every step, for
// neighbouring addresses and for addresses a power of two apart; an empty map finds nothing.
TEST(PointerMapTest, AgreesWithAnOrderedMapThroughRandomInsertsAndErases)
{
    const std::size_t strides[] = {8, 24, 64, 4096, 65536};
    for (const std::size_t stride : strides) {
        SCOPED_TRACE(stride);
        const auto keys = addresses(3000, stride);
        PointerMap<int> map;
        EXPECT_EQ(map.find(keys[0]), nullptr);
        EXPECT_FALSE(map.erase(keys[0]));
        std::map<const void*, int> reference;
        std::mt19937 random(42);
        for (int step = 0; step < 20000; ++step) {
            const void* key = keys[random() % keys.size()];
            if (random() % 3 == 0) {
                EXPECT_EQ(map.erase(key), reference.erase(key) == 1);
            } else {
                bool inserted = false;
                map.insert(key, &inserted) = step;
                EXPECT_EQ(inserted, reference.count(key) == 0);
                reference[key] = step;
            }
            ASSERT_EQ(map.size(), reference.size());
        }
        for (const void* key : keys) {
            const int* value = map.find(key);
            const auto it = reference.find(key);
            ASSERT_EQ(value != nullptr, it != reference.end());
            if (value) {
                EXPECT_EQ(*value, it->second);
            }
        }
        std::size_t visited = 0;
        map.forEach([&](const void* key, int value) {
            ++visited;
            EXPECT_EQ(reference.at(key), value);
        });
        EXPECT_EQ(visited, reference.size());
        map.clear();
        EXPECT_TRUE(map.empty());
        EXPECT_FALSE(map.contains(keys[0]));
    }
}

} // namespace
