#include "apps/viewer/main_window.h"

#include "apps/viewer/camera_controls.h"
#include "apps/viewer/control_panel.h"
#include "apps/viewer/picture_view.h"
#include "apps/viewer/snapshot.h"

#include <QAction> // in QtWidgets in Qt 5, in QtGui in Qt 6
#include <QtCore/QTimer>
#include <QtGui/QKeySequence>
#include <QtGui/QScreen>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

namespace ostrel::apps::viewer {

namespace {

const int FIGURES_MILLISECONDS = 250; // numbers that change faster cannot be read
const int NOTICE_MILLISECONDS = 8000;

QString sizeText(const QSize& size) {
    return QString("%1 × %2").arg(size.width()).arg(size.height());
}

QString figuresText(const QString& sizes, double rate, Clock::duration age) {
    const double seconds = std::chrono::duration<double>(age).count();
    const QString ageText = seconds < 1 ? QString("%1 ms").arg(seconds * 1000, 0, 'f', 0)
                                        : QString("%1 s").arg(seconds, 0, 'f', 1);
    return QString("%1   |   %2 frames/s   |   frame %3 old").arg(sizes).arg(rate, 0, 'f', 1).arg(ageText);
}

} // namespace

MainWindow::MainWindow(const WindowSettings& settings)
    : settings_(settings), panel_(new ControlPanel(settings.size)), view_(new PictureView),
      controls_(new CameraControls), figures_(new QLabel) {
    setWindowTitle("Ostrel Viewer");

    QWidget* content = new QWidget;
    QHBoxLayout* row = new QHBoxLayout(content);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(panel_);
    row->addWidget(view_, 1);
    row->addWidget(controls_);
    controls_->hide();
    setCentralWidget(content);
    figures_->setObjectName("figures");
    figures_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // As wide as it may become, so that it does not jump about.
    const QString widest = figuresText("1280 × 720 → 1280 × 720", 1000, std::chrono::milliseconds(999));
    figures_->setMinimumWidth(figures_->fontMetrics().boundingRect(widest).width());
    statusBar()->addPermanentWidget(figures_);

    connectControls();
    addShortcuts();
    startLooking();
    panel_->cameras->refresh();
    camerasChanged(); // for when there is none: then nothing has changed
}

void MainWindow::connectControls() {
    const auto index = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(panel_->cameras, &CameraList::changed, this, &MainWindow::camerasChanged);
    connect(panel_->cameras, &CameraList::pluggedIn, this, &MainWindow::takeUpAgain);
    connect(panel_->cameras, &CameraList::chosen, this, &MainWindow::chooseCamera);
    connect(panel_->size, index, this, &MainWindow::restart);
    connect(panel_->scaleTo, index, this, &MainWindow::showNewest);
    connect(panel_->method, index, this, &MainWindow::showNewest);
    connect(panel_->mirror, &QCheckBox::toggled, view_, &PictureView::setMirrored);
    connect(panel_->controls, &QPushButton::toggled, controls_, &CameraControls::setVisible);
    connect(controls_, &CameraControls::refused, this,
            [this](const QString& why) { statusBar()->showMessage(why, NOTICE_MILLISECONDS); });
    connect(panel_->snapshot, &QPushButton::clicked, this, &MainWindow::takeSnapshot);
    connect(panel_->fullScreen, &QPushButton::clicked, this, [this] { setFullScreen(true); });
    connect(&source_, &CaptureSource::frameArrived, this, &MainWindow::lookAtCamera);
    connect(view_, &PictureView::doubleClicked, this, [this] { setFullScreen(!isFullScreen()); });
}

// Actions of the window itself, so that their keys work while the panel is hidden.
void MainWindow::addShortcuts() {
    const auto add = [this](const QKeySequence& keys) {
        QAction* action = new QAction(this);
        action->setShortcut(keys);
        addAction(action);
        return action;
    };
    connect(add(Qt::Key_F11), &QAction::triggered, this, [this] { setFullScreen(!isFullScreen()); });
    connect(add(QKeySequence::Save), &QAction::triggered, this, &MainWindow::takeSnapshot);
    leaveFullScreen_ = add(Qt::Key_Escape);
    leaveFullScreen_->setEnabled(false);
    connect(leaveFullScreen_, &QAction::triggered, this, [this] { setFullScreen(false); });
}

void MainWindow::startLooking() {
    QTimer* figures = new QTimer(this);
    connect(figures, &QTimer::timeout, this, &MainWindow::lookAtCamera);
    connect(figures, &QTimer::timeout, this, &MainWindow::showFigures);
    figures->start(FIGURES_MILLISECONDS);
}

// A camera that goes is waited for; it is taken up again when it returns.
void MainWindow::camerasChanged() {
    CameraList* cameras = panel_->cameras;
    if (cameraId_.isEmpty()) {
        found_ = settings_.camera.isEmpty() ? QStringList(cameras->first())
                                            : cameras->find(settings_.camera, whyNone_);
        if (found_.size() == 1 && !found_.first().isEmpty())
            chooseCamera(found_.first());
    } else if (!cameras->isAttached(cameraId_)) {
        source_.cameraLeft();
        showFigures();
    } else if (source_.state() == CaptureSource::State::Gone) {
        restart();
    }
    cameras->mark(cameraId_);
    showState();
}

// One that has failed may be used now; one that was running was pulled out unseen.
void MainWindow::takeUpAgain(const QString& id) {
    if (id == cameraId_ && source_.state() != CaptureSource::State::Starting)
        restart();
}

void MainWindow::chooseCamera(const QString& id) {
    const bool runs =
        source_.state() == CaptureSource::State::Starting || source_.state() == CaptureSource::State::Live;
    if (id == cameraId_ && runs)
        return;
    cameraId_ = id;
    cameraName_ = panel_->cameras->nameOf(id);
    panel_->cameras->mark(id);
    restart();
}

void MainWindow::restart() {
    if (cameraId_.isEmpty())
        return;
    controls_->setCamera(cameraId_);
    source_.start(cameraId_, panel_->captureSize());
    view_->clear();
    showState();
    showFigures();
}

void MainWindow::lookAtCamera() {
    if (source_.look())
        showNewest();
    showState();
}

void MainWindow::showNewest() {
    scaler_.setLevel(panel_->scaleLevel());
    scaler_.setMethod(panel_->scaleMethod());
    // Before the first frame of a capture, the record still holds one of the capture before.
    if (source_.state() == CaptureSource::State::Live || view_->hasPicture())
        view_->showPicture(scaler_.scale(source_.frame()));
}

void MainWindow::showState() {
    if (!cameraId_.isEmpty())
        view_->setMessage(captureMessage(source_, cameraName_));
    else if (panel_->cameras->count() > 0)
        view_->setMessage(noSuchCamera(settings_.camera, found_.size() > 1, whyNone_));
    else
        view_->setMessage(noCamera());
    panel_->snapshot->setEnabled(view_->hasPicture());
}

void MainWindow::showFigures() {
    const CaptureSource::State state = source_.state();
    if (state != CaptureSource::State::Live && state != CaptureSource::State::Stalled) {
        figures_->clear();
        return;
    }
    const Clock::time_point now = Clock::now();
    const QSize captured(source_.frame().width, source_.frame().height);
    const QSize shown = view_->pictureSize();
    const QString sizes =
        shown == captured ? sizeText(captured) : sizeText(captured) + " → " + sizeText(shown);
    figures_->setText(figuresText(sizes, source_.meter().rate(now), source_.meter().age(now)));
}

void MainWindow::takeSnapshot() {
    if (view_->hasPicture())
        statusBar()->showMessage(saveSnapshot(view_->snapshot(), settings_.snapshotFolder),
                                 NOTICE_MILLISECONDS);
}

void MainWindow::setFullScreen(bool fullScreen) {
    if (fullScreen == isFullScreen())
        return;
    panel_->setVisible(!fullScreen);
    controls_->setVisible(!fullScreen && panel_->controls->isChecked());
    statusBar()->setVisible(!fullScreen);
    leaveFullScreen_->setEnabled(fullScreen);
    if (fullScreen) {
        view_->setCursor(Qt::BlankCursor);
        windowed_ = geometry();
        setGeometry(screen()->geometry()); // where no window manager does it
        showFullScreen();
    } else {
        view_->unsetCursor();
        showNormal();
        setGeometry(windowed_);
    }
}

} // namespace ostrel::apps::viewer
