#include "apps/viewer/picture_view.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>

namespace ostrel::apps::viewer {

namespace {

const QColor BACKGROUND(0x20, 0x22, 0x26);
const QColor SHADE(0x10, 0x11, 0x13, 0xa0);
const QColor CARD(0x10, 0x11, 0x13, 0xe8);
const QColor TITLE(0xf4, 0xf4, 0xf4);
const QColor DETAIL(0xb8, 0xbc, 0xc2);
const int TEXT_WIDTH = 460; // lines longer than that are hard to read
const int CARD_MARGIN = 20;

} // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
    setObjectName("picture");
    setMinimumSize(320, 240);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent); // every pixel is painted, Qt need not clear them first
}

// B, G, R, A in memory is what Qt calls RGB32 on the little-endian machines that the library runs on.
void PictureView::showPicture(const Picture& picture) {
    image_ = QImage(picture.pixels, picture.width, picture.height, picture.width * 4, QImage::Format_RGB32);
    update();
}

void PictureView::clear() {
    image_ = QImage();
    update();
}

void PictureView::setMirrored(bool mirrored) {
    mirrored_ = mirrored;
    update();
}

void PictureView::setMessage(const Message& message) {
    if (message == message_)
        return;
    message_ = message;
    setAccessibleDescription(message.isEmpty() ? QString() : message.title + ". " + message.detail);
    update();
}

QImage PictureView::snapshot() const {
    return mirrored_ ? image_.transformed(QTransform::fromScale(-1, 1)) : image_.copy();
}

QRect PictureView::pictureRect() const {
    QRect place(QPoint(0, 0), image_.size().scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(rect().center());
    return place;
}

void PictureView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), BACKGROUND);
    if (hasPicture())
        paintPicture(painter);
    if (!message_.isEmpty())
        paintMessage(painter);
}

void PictureView::paintPicture(QPainter& painter) {
    const QRect place = pictureRect();
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, place.size() != image_.size());
    if (mirrored_) {
        painter.translate(place.left() + place.left() + place.width(), 0);
        painter.scale(-1, 1);
    }
    painter.drawImage(place, image_);
    painter.restore();
}

void PictureView::paintMessage(QPainter& painter) {
    QFont titleFont = font();
    titleFont.setPointSizeF(font().pointSizeF() * 1.6);
    titleFont.setBold(true);
    const int flags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;
    const int width = qMin(TEXT_WIDTH, rect().width() - 4 * CARD_MARGIN);
    const QRect column((rect().width() - width) / 2, 0, width, rect().height());
    const QRect title = QFontMetrics(titleFont).boundingRect(column, flags, message_.title);
    const QRect detail = QFontMetrics(font()).boundingRect(column, flags, message_.detail);
    const int gap = QFontMetrics(font()).height() / 2;
    const int top = (rect().height() - title.height() - gap - detail.height()) / 2;

    const int detailTop = top + title.height() + gap;

    if (hasPicture()) {
        painter.fillRect(rect(), SHADE);
        const QRect card(column.left(), top, column.width(), detailTop + detail.height() - top);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(CARD);
        painter.drawRoundedRect(card.adjusted(-CARD_MARGIN, -CARD_MARGIN, CARD_MARGIN, CARD_MARGIN), 8, 8);
    }
    painter.setFont(titleFont);
    painter.setPen(TITLE);
    painter.drawText(column.translated(0, top), flags, message_.title);
    painter.setFont(font());
    painter.setPen(DETAIL);
    painter.drawText(column.translated(0, detailTop), flags, message_.detail);
}

void PictureView::mouseDoubleClickEvent(QMouseEvent*) {
    emit doubleClicked();
}

} // namespace ostrel::apps::viewer
