// What the controls do to the picture.
#include "viewer/window_fixture.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>
#include <QtGui/QScreen>
#include <QtGui/QTextDocument>

#include <vector>

namespace ostrel::tests {

namespace {

class Controls : public WindowTest {
protected:
    Controls() { pattern.attach(); }

    QString onlySnapshot() {
        const QStringList files = QDir(folder.path()).entryList({"*.png"}, QDir::Files);
        return files.size() == 1 ? folder.filePath(files.first()) : QString();
    }

    OVideoTestPatternCamera pattern{"viewer-test-pattern", "Pattern"};
};

// B, G, R, A of a picture whose columns are white, black, black, black, white, and so on.
std::vector<uint8_t> stripes(int width, int height) {
    std::vector<uint8_t> picture;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.insert(picture.end(), {uint8_t(x % 4 ? 0 : 255), uint8_t(x % 4 ? 0 : 255),
                                           uint8_t(x % 4 ? 0 : 255), 255});
    return picture;
}

} // namespace

TEST_F(Controls, PictureShowsTheBarsInOrder) {
    open("Pattern");
    EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
    EXPECT_EQ(view().pictureSize(), QSize(640, 480));
}

TEST_F(Controls, MirrorTurnsThePictureRound) {
    open("Pattern");
    ASSERT_TRUE(waitForBars(BARS));
    QTest::mouseClick(panel().mirror, Qt::LeftButton, Qt::NoModifier,
                      QPoint(8, panel().mirror->height() / 2));
    EXPECT_TRUE(waitForBars(MIRRORED_BARS)) << barsInWindow();
    QTest::keyClick(panel().mirror, Qt::Key_Space);
    EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
}

TEST_F(Controls, EachSizeIsCaptured) {
    open("Pattern");
    for (const QSize& size : {QSize(1280, 720), QSize(320, 240), QSize(640, 480)}) {
        const QString text = QString("%1 x %2").arg(size.width()).arg(size.height());
        select(panel().size, text);
        EXPECT_TRUE(eventually([&] { return live() && view().pictureSize() == size; })) << text.toStdString();
        EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
    }
}

TEST_F(Controls, AnotherSizeToBeginWithIsCapturedAndNotScaled) {
    open("Pattern", {800, 601});
    EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
    EXPECT_EQ(view().pictureSize(), QSize(800, 601));
    EXPECT_EQ(panel().size->currentText(), "800 x 601");
    EXPECT_FALSE(panel().scaleTo->isEnabled());
    select(panel().size, "320 x 240");
    EXPECT_TRUE(panel().scaleTo->isEnabled());
    EXPECT_TRUE(eventually([this] { return live() && view().pictureSize() == QSize(320, 240); }));
}

TEST_F(Controls, EachLevelCanBeScaledTo) {
    open("Pattern");
    ASSERT_TRUE(waitForPicture());
    EXPECT_FALSE(panel().method->isEnabled());
    for (const QSize& size : {QSize(320, 240), QSize(640, 480), QSize(1280, 720)}) {
        select(panel().scaleTo, QString("%1 x %2").arg(size.width()).arg(size.height()));
        EXPECT_TRUE(panel().method->isEnabled());
        EXPECT_TRUE(eventually([&] { return view().pictureSize() == size; })) << size.width();
        EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
    }
    EXPECT_TRUE(eventually([&] { return figures().startsWith("640 × 480 → 1280 × 720"); }))
        << figures().toStdString();
    select(panel().scaleTo, "As captured");
    EXPECT_TRUE(eventually([&] { return view().pictureSize() == QSize(640, 480); }));
}

// Of 1280 columns 320 are made: four become one. Averaged, one white and three black make a quarter of white;
// points stay white or black.
TEST_F(Controls, MethodsScaleDifferently) {
    OVideoPushCamera camera("viewer-test-stripes", "Stripes");
    camera.attach();
    open("Stripes");
    select(panel().size, "1280 x 720");
    select(panel().scaleTo, "320 x 240");
    const std::vector<uint8_t> picture = stripes(1280, 720);
    ASSERT_TRUE(eventually([&] { return camera.push(picture.data(), 1280, 720, 1280 * 4) && live(); }));

    const auto brightness = [this] { return qGreen(view().snapshot().pixel(160, 120)); };
    select(panel().method, "Box");
    EXPECT_NEAR(brightness(), 64, 3);
    select(panel().method, "Bilinear");
    const int bilinear = brightness();
    EXPECT_GT(std::abs(bilinear - 64), 10) << bilinear;
    select(panel().method, "None");
    EXPECT_TRUE(brightness() < 3 || brightness() > 252) << brightness();
}

TEST_F(Controls, SnapshotSavesWhatIsShown) {
    open("Pattern");
    ASSERT_TRUE(waitForPicture());
    select(panel().scaleTo, "320 x 240");
    QTest::mouseClick(panel().snapshot, Qt::LeftButton);
    const QString path = onlySnapshot();
    ASSERT_FALSE(path.isEmpty());
    const QImage saved(path);
    EXPECT_EQ(saved.size(), QSize(320, 240));
    EXPECT_EQ(barsIn(saved), BARS);
    EXPECT_EQ(window->statusBar()->currentMessage(), "Saved " + path);
}

TEST_F(Controls, SnapshotIsMirroredWithThePicture) {
    open("Pattern");
    ASSERT_TRUE(waitForPicture());
    QTest::keyClick(panel().mirror, Qt::Key_Space);
    QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
    ASSERT_TRUE(eventually([this] { return !onlySnapshot().isEmpty(); }));
    EXPECT_EQ(barsIn(QImage(onlySnapshot())), MIRRORED_BARS);
}

TEST_F(Controls, SnapshotThatCannotBeSavedIsSaid) {
    open("Pattern");
    ASSERT_TRUE(waitForPicture());
    folder.remove();
    QTest::mouseClick(panel().snapshot, Qt::LeftButton);
    EXPECT_TRUE(window->statusBar()->currentMessage().startsWith("Cannot save "))
        << window->statusBar()->currentMessage().toStdString();
}

TEST_F(Controls, F11FillsTheScreenAndEscLeadsBack) {
    open("Pattern");
    ASSERT_TRUE(waitForPicture());
    QTest::keyClick(window.get(), Qt::Key_F11);
    EXPECT_TRUE(eventually([this] { return window->isFullScreen() && view().size() == window->size(); }));
    EXPECT_EQ(window->size(), window->screen()->size());
    EXPECT_FALSE(panel().isVisible());
    EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();

    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_TRUE(eventually([this] { return !window->isFullScreen() && panel().isVisible(); }));

    QTest::mouseDClick(&view(), Qt::LeftButton);
    EXPECT_TRUE(eventually([this] { return window->isFullScreen(); }));
    QTest::keyClick(window.get(), Qt::Key_F11);
    EXPECT_TRUE(eventually([this] { return !window->isFullScreen(); }));
}

TEST_F(Controls, FiguresTellSizeRateAndAge) {
    open("Pattern");
    const QRegularExpression form("^640 × 480   \\|   ([0-9.]+) frames/s   \\|   frame ([0-9.]+) m?s old$");
    EXPECT_TRUE(eventually([&] { return form.match(figures()).captured(1).toDouble() > 1; }))
        << figures().toStdString();
}

// A tip would load the file.
TEST_F(Controls, TheNameOfACameraIsTextInItsTip) {
    const QString name = "<img src=/dev/zero>";
    OVideoTestPatternCamera camera("viewer-test-markup", name);
    camera.attach();
    open(name);
    const QList<QListWidgetItem*> items = panel().cameras->findItems(name, Qt::MatchExactly);
    ASSERT_EQ(items.size(), 1);
    QTextDocument tip;
    tip.setHtml(items.first()->toolTip());
    EXPECT_TRUE(tip.toPlainText().contains(name)) << tip.toPlainText().toStdString();
}

TEST_F(Controls, CameraIsChosenByMouseAndByKeys) {
    OVideoPushCamera red("viewer-test-red", "Red"); // after the pattern in the list
    red.attach();
    open("Pattern");
    ASSERT_TRUE(waitForBars(BARS));
    const std::vector<uint8_t> reds = [] {
        std::vector<uint8_t> picture;
        for (int i = 0; i < 64 * 48; ++i)
            picture.insert(picture.end(), {0, 0, 255, 255});
        return picture;
    }();
    const auto showsRed = [&] {
        return red.push(reds.data(), 64, 48, 64 * 4) && live() && barsInWindow() == "RRRRRRRR";
    };

    clickCamera("Red");
    EXPECT_TRUE(eventually(showsRed)) << barsInWindow();
    QTest::keyClick(panel().cameras, Qt::Key_Up);
    EXPECT_TRUE(waitForBars(BARS)) << barsInWindow();
    QTest::keyClick(panel().cameras, Qt::Key_Down);
    EXPECT_TRUE(eventually(showsRed)) << barsInWindow();
}

} // namespace ostrel::tests
