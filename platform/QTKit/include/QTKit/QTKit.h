// The part of QTKit that capturing video needs: names, signatures and behaviour as published.
#ifndef OSTREL_QTKIT_H
#define OSTREL_QTKIT_H

#import <QTKit/QTCaptureDevice.h>
#import <QTKit/QTCaptureInput.h>
#import <QTKit/QTCaptureOutput.h>
#import <QTKit/QTCaptureSession.h>

#endif
