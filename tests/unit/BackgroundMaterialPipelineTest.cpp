#include "overlay/BackgroundMaterialPipeline.h"

#include "ScriptedDesktop.h"
#include "overlay/GrainCache.h"
#include "platform/Platform.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<Filter> material(double radius, double brightness, double saturation, double contrast) {
    return {{Filter::Type::gaussianBlur, radius},
            {Filter::Type::brightness, brightness},
            {Filter::Type::saturation, saturation},
            {Filter::Type::contrast, contrast}};
}

// The grain cache is one for the whole process, so every test has image sizes of its own.
class BackgroundMaterialPipelineTest : public testing::Test {
  protected:
    void make(bool liveBackdrop = true) {
        pipeline.reset();
        tree.layers.clear();
        pipeline = std::make_unique<BackgroundMaterialPipeline>(tree, Capabilities{liveBackdrop},
                                                                loop, [this] { ++arrivals; });
    }

    const Layer &base() const { return tree.layers.at(0); }
    const Layer &structure() const { return tree.layers.at(1); }
    const Layer &grain() const { return tree.layers.back(); }

    test::ScriptedMainLoop loop{0};
    LayerTree tree;
    std::unique_ptr<BackgroundMaterialPipeline> pipeline;
    int arrivals = 0;
};

TEST_F(BackgroundMaterialPipelineTest, TwoBackdropsUnderAGrainOrTheGrainAlone) {
    make();
    ASSERT_THAT(tree.layers, SizeIs(3));
    EXPECT_EQ(base().kind, Layer::Kind::backdrop);
    EXPECT_EQ(structure().kind, Layer::Kind::backdrop);
    make(false);
    ASSERT_THAT(tree.layers, SizeIs(1));
    EXPECT_EQ(grain().kind, Layer::Kind::plain);
    pipeline->update(1);
    EXPECT_EQ(grain().opacity, 0.34F);
    pipeline->setBlurEnabled(false);
    pipeline->update(1);
    EXPECT_EQ(grain().opacity, 0.24F);
}

TEST_F(BackgroundMaterialPipelineTest, EachIntensityIsAppliedOnce) {
    make();
    for (const double intensity : {-0.5, 0.0}) {
        pipeline->update(intensity);
        EXPECT_EQ(base().filters, material(24, -0.02, 1.2, 1.015));
        EXPECT_EQ(structure().filters, material(7, -0.018, 1.08, 1.2));
        EXPECT_EQ(structure().opacity, 0.095F);
        EXPECT_EQ(grain().opacity, 0.235F);
        EXPECT_EQ(base().opacity, 1.0F);
    }
    pipeline->update(2);
    EXPECT_EQ(base().filters, material(34, -0.02 - 0.012, 1.2 + 0.14, 1.015 + 0.03));
    EXPECT_EQ(structure().filters, material(12, -0.018, 1.08, 1.2 + 0.08));
    EXPECT_EQ(structure().opacity, 0.14F);
    EXPECT_EQ(grain().opacity, 0.34F);

    // What is not touched stays gone.
    tree.layers[0].filters.clear();
    pipeline->update(1);
    EXPECT_THAT(base().filters, IsEmpty());
    pipeline->update(0.5);
    EXPECT_EQ(base().filters,
              material(29, -0.02 - 0.012 * 0.5, 1.2 + 0.14 * 0.5, 1.015 + 0.03 * 0.5));
}

TEST_F(BackgroundMaterialPipelineTest, SwitchedBlurIsAppliedInFull) {
    make();
    pipeline->update(0.5);
    const auto blurred = tree;
    pipeline->setBlurEnabled(true); // as it is
    tree.layers[0].filters.clear();
    pipeline->update(0.5);
    EXPECT_THAT(base().filters, IsEmpty());

    pipeline->setBlurEnabled(false);
    EXPECT_EQ(base().opacity, 0.0F);
    EXPECT_EQ(structure().opacity, 0.0F);
    pipeline->update(0.5);
    EXPECT_EQ(grain().opacity, 0.2F);
    EXPECT_EQ(structure().opacity, 0.0F);
    pipeline->setBlurEnabled(true);
    EXPECT_EQ(structure().opacity, 1.0F);
    pipeline->update(0.5);
    EXPECT_EQ(tree, blurred);
}

TEST_F(BackgroundMaterialPipelineTest, LayoutAtOnceAndGrainInTheBackground) {
    make();
    pipeline->layout({0, 0, 31, 17}, 1.5);
    for (const auto &layer : tree.layers) {
        EXPECT_EQ(layer.frame, (Rect{0, 0, 31, 17}));
    }
    EXPECT_EQ(base().backdropScale, 1.5);
    EXPECT_EQ(structure().backdropScale, 1.5);
    EXPECT_EQ(grain().contentsScale, 1.5);
    EXPECT_EQ(grain().contents, nullptr);
    pipeline->layout({0, 0, 31, 17}, 1.5);

    auto tasks = loop.takeBackgroundTasks();
    ASSERT_THAT(tasks, SizeIs(1)) << "the second layout changed nothing";
    EXPECT_EQ(tasks[0].quality, QualityOfService::userInitiated);
    std::thread(tasks[0].run).join();
    EXPECT_EQ(grain().contents, nullptr) << "nothing is applied on another thread";
    loop.runPosted();
    ASSERT_NE(grain().contents, nullptr);
    EXPECT_EQ(grain().contents->width, 46);
    EXPECT_EQ(grain().contents->height, 25);
    EXPECT_EQ(arrivals, 1);

    const auto image = grain().contents;
    make();
    pipeline->layout({0, 0, 31, 17}, 1.5);
    EXPECT_EQ(grain().contents, image) << "from the cache, without waiting";
    EXPECT_THAT(loop.takeBackgroundTasks(), IsEmpty());
}

TEST_F(BackgroundMaterialPipelineTest, GrainOfTheNewestLayout) {
    make();
    for (const bool newestFirst : {false, true}) {
        const double width = newestFirst ? 61 : 62;
        pipeline->layout({0, 0, width, 3}, 1);
        pipeline->layout({0, 0, width, 4}, 1);
        auto tasks = loop.takeBackgroundTasks();
        ASSERT_THAT(tasks, SizeIs(2));
        if (newestFirst) {
            std::swap(tasks[0], tasks[1]);
        }
        arrivals = 0;
        for (auto &task : tasks) {
            std::thread(task.run).join();
            loop.runPosted();
        }
        EXPECT_EQ(arrivals, 1);
        EXPECT_EQ(grain().contents->height, 4);
        pipeline->layout({0, 0, width, 5}, 1);
        pipeline->layout({0, 0, width, 4}, 1); // from the cache
        loop.runBackgroundTasks();
        loop.runPosted();
        EXPECT_EQ(grain().contents->height, 4);
    }
}

TEST_F(BackgroundMaterialPipelineTest, EndWhileGrainIsOnTheWay) {
    make();
    pipeline->layout({0, 0, 71, 1}, 1);
    pipeline.reset();
    loop.runBackgroundTasks();
    EXPECT_EQ(GrainCache::shared().find(grainCacheKey({71, 1}, 1)), nullptr)
        << "nothing is rendered for a pipeline that is gone";

    make();
    pipeline->layout({0, 0, 71, 2}, 1);
    for (auto &task : loop.takeBackgroundTasks()) {
        std::thread(task.run).join();
    }
    pipeline.reset();
    loop.runPosted();
    EXPECT_EQ(arrivals, 0);

    // Both at the same time, for the thread sanitizer to look at.
    make();
    pipeline->layout({0, 0, 1500, 1000}, 1);
    std::thread renderer(loop.takeBackgroundTasks().at(0).run);
    pipeline.reset();
    renderer.join();
    loop.runPosted();
    EXPECT_EQ(arrivals, 0);
}

TEST_F(BackgroundMaterialPipelineTest, EachSizeIsPrewarmedOnce) {
    const std::vector<Screen> screens{
        {1, {0, 0, 81, 10}, 1}, {2, {81, 0, 81, 10}, 1}, {3, {0, 10, 81, 10}, 2}};
    const auto prewarm = [&] { BackgroundMaterialPipeline::prewarmGrainCache(screens, loop); };
    prewarm();
    prewarm();
    // The first loop ends without having run its tasks: the next one has to.
    EXPECT_THAT(loop.takeBackgroundTasks(), SizeIs(2));
    prewarm();
    auto tasks = loop.takeBackgroundTasks();
    ASSERT_THAT(tasks, SizeIs(2));
    EXPECT_EQ(tasks[0].quality, QualityOfService::utility);
    for (auto &task : tasks) {
        std::thread(task.run).join();
    }
    prewarm();
    EXPECT_THAT(loop.takeBackgroundTasks(), IsEmpty());
    EXPECT_EQ(GrainCache::shared().find(grainCacheKey({81, 10}, 2))->width, 162);
}

TEST(GrainCache, KnownBytesEveryTime) {
    // Both made by another implementation of the generator.
    EXPECT_THAT(makeFineGrainImage({2, 2}, 1)->pixels, ElementsAre(52, 99, 154, 126));
    const auto image = makeFineGrainImage({257, 131.9}, 1);
    ASSERT_THAT(image->pixels, SizeIs(257 * 131));
    std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    for (std::size_t pixel = 0; pixel < image->pixels.size(); ++pixel) {
        for (const auto byte : image->rgbaAt(pixel)) {
            hash = (hash ^ byte) * 0x100000001b3;
        }
    }
    EXPECT_EQ(hash, 0x4aca1fd4ebdfcd0U);
}

TEST(GrainCache, KeepsUsedImagesAndTheNewestOthersWithinItsBudget) {
    auto &cache = GrainCache::shared();
    const auto at = [&](int index) { return cache.find(grainCacheKey({1024, 1000.0 + index}, 1)); };
    const auto used = cache.findOrRender({1024, 1000}, 1);
    for (int index = 1; index < 100; ++index) {
        cache.findOrRender({1024, 1000.0 + index}, 1);
        EXPECT_NE(at(1), nullptr) << "used again and again";
    }
    EXPECT_EQ(at(0), used);
    EXPECT_NE(at(99), nullptr);
    std::size_t kept = 0;
    for (int index = 1; index < 100; ++index) {
        const auto image = at(index);
        kept += image ? image->pixels.size() : 0;
    }
    EXPECT_GT(kept, GrainCache::budget / 2);
    EXPECT_LE(kept, GrainCache::budget + 2 * used->pixels.size());
}

TEST(GrainCache, OneRenderingForSeveralThreads) {
    std::vector<std::shared_ptr<const Image>> images(4);
    std::vector<std::thread> threads;
    threads.reserve(images.size());
    for (auto &image : images) {
        threads.emplace_back([&image] {
            image = GrainCache::shared().findOrRender({911, 700}, 1);
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    EXPECT_NE(images[0], nullptr);
    EXPECT_THAT(images, testing::Each(images[0]));
}

} // namespace
} // namespace lumo
