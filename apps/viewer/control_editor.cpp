#include "apps/viewer/control_editor.h"

#include <QtCore/QSignalBlocker>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QSpinBox>

#include <algorithm>

namespace ostrel::apps::viewer {

ControlEditor::ControlEditor(const OVideoControl& control) : control_(control) {
    QHBoxLayout* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    switch (control.type()) {
    case OVideoControl::INTEGER:
        makeSlider();
        break;
    case OVideoControl::BOOLEAN:
        makeBox();
        break;
    case OVideoControl::MENU:
    case OVideoControl::INTEGER_MENU:
        makeMenu();
        break;
    case OVideoControl::BUTTON:
        makeButton();
        break;
    default:
        makeLine();
        break;
    }
}

void ControlEditor::showControl(const OVideoControl& control, const QString& holder) {
    control_ = control;
    show_();
    setEnabled(!control.isInactive() && !control.isReadOnly() && !control.isGrabbed());
    setToolTip(isEnabled() || holder.isEmpty() ? QString() : holder + " has the say");
}

void ControlEditor::edit(int64_t value) {
    control_.setValue(value);
    emit edited(control_);
}

// Both show the same value.
void ControlEditor::makeSlider() {
    QSlider* slider = new QSlider(Qt::Horizontal);
    QSpinBox* number = new QSpinBox;
    number->setKeyboardTracking(false); // not each digit on the way
    layout()->addWidget(slider);
    layout()->addWidget(number);
    connect(slider, &QSlider::valueChanged, this, [this, number](int value) {
        const QSignalBlocker quiet(number);
        number->setValue(value);
        edit(value);
    });
    connect(number, QOverload<int>::of(&QSpinBox::valueChanged), slider, &QSlider::setValue);
    show_ = [this, slider, number] {
        if (slider->isSliderDown())
            return; // in the user's hand
        const QSignalBlocker quiet(slider), quietToo(number);
        const int least = static_cast<int>(control_.minimum());
        const int most = static_cast<int>(control_.maximum());
        const int step = static_cast<int>(std::max<int64_t>(control_.step(), 1));
        slider->setRange(least, most);
        slider->setSingleStep(step);
        slider->setPageStep(std::max(step, static_cast<int>((control_.maximum() - control_.minimum()) / 10)));
        slider->setValue(static_cast<int>(control_.value()));
        number->setRange(least, most);
        number->setSingleStep(step);
        number->setValue(static_cast<int>(control_.value()));
    };
    show_();
}

void ControlEditor::makeBox() {
    QCheckBox* box = new QCheckBox;
    layout()->addWidget(box);
    connect(box, &QCheckBox::clicked, this, [this](bool on) { edit(on); });
    show_ = [this, box] { box->setChecked(control_.value() != 0); };
}

void ControlEditor::makeMenu() {
    QComboBox* menu = new QComboBox;
    menu->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    const QMap<int, QString> items = control_.items();
    for (auto item = items.begin(); item != items.end(); ++item)
        menu->addItem(item.value(), item.key());
    layout()->addWidget(menu);
    connect(menu, QOverload<int>::of(&QComboBox::activated), this,
            [this, menu](int index) { edit(menu->itemData(index).toInt()); });
    show_ = [this, menu] { menu->setCurrentIndex(menu->findData(static_cast<int>(control_.value()))); };
}

void ControlEditor::makeButton() {
    QPushButton* button = new QPushButton(control_.name());
    layout()->addWidget(button);
    connect(button, &QPushButton::clicked, this, [this] { edit(1); });
    show_ = [] {};
}

// Numbers that are too large for a slider, bits, and texts.
void ControlEditor::makeLine() {
    QLineEdit* line = new QLineEdit;
    layout()->addWidget(line);
    const bool isText = control_.type() == OVideoControl::TEXT;
    const auto text = [this, isText] {
        return isText                                      ? control_.text()
               : control_.type() == OVideoControl::BITMASK ? "0x" + QString::number(control_.value(), 16)
                                                           : QString::number(control_.value());
    };
    connect(line, &QLineEdit::editingFinished, this, [this, line, isText, text] {
        bool isNumber = false;
        const int64_t value = line->text().toLongLong(&isNumber, 0);
        if (line->text() == text())
            return;
        if (isText)
            control_.setText(line->text());
        if (isText || isNumber)
            edit(isText ? 0 : value);
        else
            line->setText(text());
    });
    show_ = [line, text] {
        if (!line->hasFocus() || !line->isModified())
            line->setText(text());
    };
}

} // namespace ostrel::apps::viewer
