#include "apps/viewer/control_panel.h"

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

namespace ostrel::apps::viewer {

namespace {

const int WIDTH = 230;
const VIDEO_QUALITY LEVELS[] = {VIDEO_QUALITY_LD, VIDEO_QUALITY_SD, VIDEO_QUALITY_HD};

void addLevels(QComboBox* box) {
    for (const VIDEO_QUALITY level : LEVELS)
        box->addItem(OVideoCommon::qualityToString(level), int(level));
}

} // namespace

ControlPanel::ControlPanel(const Size& captured)
    : cameras(new CameraList), size(new QComboBox), scaleTo(new QComboBox), method(new QComboBox),
      mirror(new QCheckBox("&Mirror")), controls(new QPushButton("Camera c&ontrols")),
      snapshot(new QPushButton("Take &snapshot")), fullScreen(new QPushButton("&Full screen")) {
    fill(captured);
    arrange();
}

void ControlPanel::fill(const Size& captured) {
    size->setObjectName("size");
    addLevels(size);
    const std::optional<VIDEO_QUALITY> level = levelOf(captured);
    if (!level)
        size->addItem(QString("%1 x %2").arg(captured.width).arg(captured.height),
                      QSize(captured.width, captured.height));
    size->setCurrentIndex(level ? size->findData(int(*level)) : size->count() - 1);

    scaleTo->setObjectName("scaleTo");
    scaleTo->addItem("As captured");
    addLevels(scaleTo);

    method->setObjectName("method");
    method->addItem("None", int(SCALE_METHOD_NONE));
    method->addItem("Bilinear", int(SCALE_METHOD_BILINEAR));
    method->addItem("Box", int(SCALE_METHOD_BOX));
    method->setCurrentIndex(method->findData(int(SCALE_METHOD_BOX)));
    method->setToolTip("How pixels are mixed when the picture is scaled");
    enable();
    connect(size, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ControlPanel::enable);
    connect(scaleTo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ControlPanel::enable);

    mirror->setObjectName("mirror");
    controls->setObjectName("controls");
    controls->setCheckable(true);
    controls->setToolTip("Brightness, exposure, focus and what else the camera has");
    snapshot->setObjectName("snapshot");
    snapshot->setToolTip("Save the picture as a PNG file (Ctrl+S)");
    snapshot->setEnabled(false);
    fullScreen->setObjectName("fullScreen");
    fullScreen->setToolTip("F11, or double-click the picture; Esc leads back");
}

void ControlPanel::arrange() {
    setFixedWidth(WIDTH);
    QLabel* heading = new QLabel("&Cameras");
    heading->setBuddy(cameras);

    QFormLayout* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow("Si&ze", size);
    form->addRow("Scale &to", scaleTo);
    form->addRow("M&ethod", method);
    form->addRow(QString(), mirror);

    QVBoxLayout* column = new QVBoxLayout(this);
    column->addWidget(heading);
    column->addWidget(cameras, 1);
    column->addLayout(form);
    column->addWidget(controls);
    column->addWidget(snapshot);
    column->addWidget(fullScreen);
}

// The library scales its three sizes alone.
void ControlPanel::enable() {
    scaleTo->setEnabled(levelOf(captureSize()).has_value());
    method->setEnabled(scaleTo->isEnabled() && scaleLevel());
}

Size ControlPanel::captureSize() const {
    const QVariant chosen = size->currentData();
    const QSize other = chosen.toSize();
    return other.isValid() ? Size{other.width(), other.height()} : sizeOf(VIDEO_QUALITY(chosen.toInt()));
}

std::optional<VIDEO_QUALITY> ControlPanel::scaleLevel() const {
    const QVariant level = scaleTo->currentData();
    return level.isValid() ? std::optional(VIDEO_QUALITY(level.toInt())) : std::nullopt;
}

ScaleMethod ControlPanel::scaleMethod() const {
    return ScaleMethod(method->currentData().toInt());
}

} // namespace ostrel::apps::viewer
