#include <Util/Preview/PreviewPicture.h>

#include <TestSupport.h>

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr QSize Size(64, 36);
const QRgb Red = qRgb(255, 0, 0);
const QRgb Blue = qRgb(0, 0, 255);
const QRgb Green = qRgb(0, 255, 0);
const QPoint Left(8, 18);
const QPoint Right(56, 18);

// Stock pictures the size of the preview: "a" red on its left half and blue on its right,
// "b" green.
class PreviewPictureTest : public testing::Test
{
protected:
    PreviewPictureTest()
    {
        QImage a(Size, QImage::Format_RGB32);
        a.fill(Blue);
        for (int y = 0; y < Size.height(); ++y)
            for (int x = 0; x < Size.width() / 2; ++x)
                a.setPixel(x, y, Red);
        a.save(path("a"));
        QImage b(Size, QImage::Format_RGB32);
        b.fill(Green);
        b.save(path("b"));
    }

    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name) + QStringLiteral(".png")); }

    template <class X>
    Preview::Object<X> record(std::initializer_list<const char*> pictures) const
    {
        Preview::Object<X> preview;
        for (const char* name : pictures) {
            Media::File file;
            file.setPath(Types::String(path(name)));
            preview.identity.media.push_back(file);
        }
        return preview;
    }

    static bool near(QRgb a, QRgb b)
    {
        return std::abs(qRed(a) - qRed(b)) <= 2 && std::abs(qGreen(a) - qGreen(b)) <= 2
               && std::abs(qBlue(a) - qBlue(b)) <= 2;
    }

    QTemporaryDir dir;
};

TEST_F(PreviewPictureTest, EffectsAndFiltersChangeTheStockPicture)
{
    struct Row
    {
        const char* name;
        std::string collection;
        std::string id;
        double strength;
        QRgb left;
        QRgb right;
    };
    const std::string filter = EditorCollection::CollectionID::FILTERS_COLOR;
    const std::string video = EditorCollection::CollectionID::EFFECTS_VIDEO;
    const Row rows[] = {
        {"grayscale", filter, "grayscale", 1, qRgb(qGray(Red), qGray(Red), qGray(Red)),
         qRgb(qGray(Blue), qGray(Blue), qGray(Blue))},
        {"sepia", filter, "sepia", 1, qRgb(100, 89, 69), qRgb(48, 43, 33)},
        {"invert", filter, "invert", 1, qRgb(0, 255, 255), qRgb(255, 255, 0)},
        {"half an inversion", filter, "invert", 0.5, qRgb(128, 128, 128), qRgb(128, 128, 128)},
        {"mirror", video, "mirror", 1, Blue, Red},
        {"an effect it cannot draw", video, "sparkle", 1, Red, Blue},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto preview = record<Effect::Object>({"a"});
        Effect::Object effect(row.collection, row.id);
        effect.setParameter("strength", row.strength);
        preview.target = &effect;

        const QImage picture = PreviewPicture::draw(preview, Size);

        ASSERT_EQ(picture.size(), Size);
        EXPECT_TRUE(near(picture.pixel(Left), row.left)) << std::hex << picture.pixel(Left);
        EXPECT_TRUE(near(picture.pixel(Right), row.right)) << std::hex << picture.pixel(Right);
    }
}

TEST_F(PreviewPictureTest, TransitionsShowBothPicturesHalfWay)
{
    struct Row
    {
        const char* name;
        QRgb left;
        QRgb right;
    };
    const Row rows[] = {
        {"crossfade", qRgb(128, 128, 0), qRgb(0, 128, 128)},
        {"wipe", Green, Blue},
        {"slide", Blue, Green},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        auto preview = record<Transition::Object>({"a", "b"});
        const Transition::Object transition(row.name);
        preview.target = &transition;

        const QImage picture = PreviewPicture::draw(preview, Size);

        EXPECT_TRUE(near(picture.pixel(Left), row.left)) << std::hex << picture.pixel(Left);
        EXPECT_TRUE(near(picture.pixel(Right), row.right)) << std::hex << picture.pixel(Right);
    }
}

TEST_F(PreviewPictureTest, PanAndZoomShowsThePictureThroughTheTransformAtThePosition)
{
    auto preview = record<Animation::TransformationItem>({"a"});
    Animation::TransformationItem item;
    item.setKey(0, Transformation::Object());
    item.setKey(1000, Transformation::Object().setMatrix(Types::Transform(QTransform::fromTranslate(32, 0))));
    preview.target = &item;

    preview.position = 0;
    EXPECT_TRUE(near(PreviewPicture::draw(preview, Size).pixel(40, 18), Blue));
    preview.position = 1000;
    const QImage moved = PreviewPicture::draw(preview, Size);
    EXPECT_TRUE(near(moved.pixel(40, 18), Red));
    EXPECT_TRUE(near(moved.pixel(Left), qRgb(0, 0, 0))) << "uncovered by the picture";
}

TEST_F(PreviewPictureTest, TitlesAndQuizzesAreDrawnOverTheMiddleOnly)
{
    Overlay::Preset title;
    title.appendItem(Overlay::Item().setText("Hi"));
    auto titlePreview = record<Overlay::Preset>({"b"});
    titlePreview.target = &title;
    Quiz::Preset quiz;
    quiz.questions.push_back({Types::String("Which?"), {Types::String("this"), Types::String("that")}, {1}});
    auto quizPreview = record<Quiz::Preset>({"b"});
    quizPreview.target = &quiz;

    const std::pair<const char*, QImage> pictures[] = {{"title", PreviewPicture::draw(titlePreview, Size)},
                                                       {"quiz", PreviewPicture::draw(quizPreview, Size)}};
    for (const auto& [name, picture] : pictures) {
        SCOPED_TRACE(name);
        ASSERT_EQ(picture.size(), Size);
        EXPECT_TRUE(near(picture.pixel(0, 0), Green));
        EXPECT_FALSE(near(picture.pixel(32, 18), Green));
    }
}

TEST_F(PreviewPictureTest, WithoutATargetTheStockPictureShowsAndAMissingOneGivesNothing)
{
    auto plain = record<Effect::Object>({"a"});
    const QImage picture = PreviewPicture::draw(plain, Size);
    EXPECT_TRUE(near(picture.pixel(Left), Red));
    EXPECT_TRUE(near(picture.pixel(Right), Blue));

    TestSupport::LogCapture log;
    auto missing = record<Effect::Object>({"nowhere"});
    EXPECT_TRUE(PreviewPicture::draw(missing, Size).isNull());
    auto noSecond = record<Transition::Object>({"a"});
    const Transition::Object crossfade("crossfade");
    noSecond.target = &crossfade;
    EXPECT_TRUE(PreviewPicture::draw(noSecond, Size).isNull());
    EXPECT_TRUE(log.containsError("PreviewPicture::draw"));
}

} // namespace
