// Shows the live picture, or says why there is none.
#ifndef OSTREL_APPS_VIEWER_PICTURE_VIEW_H
#define OSTREL_APPS_VIEWER_PICTURE_VIEW_H

#include "apps/viewer/messages.h"
#include "apps/viewer/picture_scaler.h"

#include <QtGui/QImage>
#include <QtWidgets/QWidget>

namespace ostrel::apps::viewer {

// Bound to the GUI's thread.
class PictureView : public QWidget {
    Q_OBJECT

public:
    explicit PictureView(QWidget* parent = nullptr);

    // The pixels are not copied: they have to stay until the next call of showPicture() or clear().
    void showPicture(const Picture& picture);
    void clear();
    bool hasPicture() const { return !image_.isNull(); }
    QSize pictureSize() const { return image_.size(); }

    void setMirrored(bool mirrored);
    // Said over the darkened picture. An empty message takes it away.
    void setMessage(const Message& message);
    Message message() const { return message_; }

    // What is shown, in the picture's own size: mirrored if the view is.
    QImage snapshot() const;
    // Where the picture stands in the widget.
    QRect pictureRect() const;

    QSize sizeHint() const override { return QSize(640, 480); }

signals:
    void doubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void paintPicture(QPainter& painter);
    void paintMessage(QPainter& painter);

    QImage image_;
    bool mirrored_ = false;
    Message message_;
};

} // namespace ostrel::apps::viewer

#endif
