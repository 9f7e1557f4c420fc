#include "driver_test.h"

using namespace ostrel;

namespace {

// What the meta-object compiler writes first: its revision, the class name, then pairs of count and offset
// for class information, methods, properties and enumerations, then constructors.
enum { REVISION = 0, CLASS_INFO = 2, METHODS = 4, PROPERTIES = 6, ENUMERATIONS = 8, CONSTRUCTORS = 10 };

unsigned expectedRevision() {
#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
    return 6;
#elif QT_VERSION >= QT_VERSION_CHECK(5, 12, 0) && QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return 8;
#elif QT_VERSION >= QT_VERSION_CHECK(6, 2, 0) && QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
    return 10;
#else
    return QThread::staticMetaObject.d.data[REVISION]; // Qt's own was written by the same compiler
#endif
}

void expectNothingDeclared(const QMetaObject& meta) {
    EXPECT_EQ(meta.classInfoCount(), meta.classInfoOffset());
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    EXPECT_EQ(meta.enumeratorCount(), meta.enumeratorOffset());
    EXPECT_EQ(meta.constructorCount(), 0);
    const unsigned* const raw = meta.d.data;
    EXPECT_EQ(raw[REVISION], expectedRevision());
    for (int count : {CLASS_INFO, METHODS, PROPERTIES, ENUMERATIONS, CONSTRUCTORS})
        EXPECT_EQ(raw[count], 0u) << "at " << count;
}

class MetaObject : public support::DriverTest {
protected:
    MetaObject() {
        driver.startCapture("none", 16, 16); // so that it has a session object to give back
    }
    OVideoCaptureMacX driver;
};

} // namespace

TEST_F(MetaObject, OfTheInterfaceDerivesFromTheThreadsAndDeclaresNothing) {
    const QMetaObject& meta = OVideoCaptureUnix::staticMetaObject;
    EXPECT_STREQ(meta.className(), "ostrel::OVideoCaptureUnix");
    EXPECT_EQ(meta.superClass(), &QThread::staticMetaObject);
    expectNothingDeclared(meta);
}

TEST_F(MetaObject, OfTheDriverDerivesFromTheInterfacesAndDeclaresNothing) {
    const QMetaObject& meta = OVideoCaptureMacX::staticMetaObject;
    EXPECT_STREQ(meta.className(), "ostrel::OVideoCaptureMacX");
    EXPECT_EQ(meta.superClass(), &OVideoCaptureUnix::staticMetaObject);
    expectNothingDeclared(meta);
    EXPECT_EQ(driver.metaObject(), &meta);
}

TEST_F(MetaObject, CastAnswersForTheClassAndItsBasesByteForByte) {
    void* const object = &driver;
    EXPECT_EQ(driver.qt_metacast(nullptr), nullptr);
    EXPECT_EQ(driver.qt_metacast("ostrel::OVideoCaptureMacX"), object);
    EXPECT_EQ(driver.qt_metacast("ostrel::OVideoCaptureUnix"), object);
    EXPECT_EQ(driver.qt_metacast("QThread"), object);
    EXPECT_EQ(driver.qt_metacast("QObject"), object);
    EXPECT_EQ(driver.qt_metacast(""), nullptr);
    EXPECT_EQ(driver.qt_metacast("OVideoCaptureMacX"), nullptr);
    EXPECT_EQ(driver.qt_metacast("ostrel::OVideoCaptureMacX "), nullptr);
    EXPECT_EQ(driver.qt_metacast("ostrel::ovideocapturemacx"), nullptr);
    EXPECT_EQ(driver.qt_metacast("QTimer"), nullptr);
}

TEST_F(MetaObject, CastOfTheInterfaceDoesNotKnowTheDriver) {
    EXPECT_EQ(driver.OVideoCaptureUnix::qt_metacast("ostrel::OVideoCaptureMacX"), nullptr);
    EXPECT_EQ(driver.OVideoCaptureUnix::qt_metacast("ostrel::OVideoCaptureUnix"),
              static_cast<void*>(&driver));
    EXPECT_EQ(driver.OVideoCaptureUnix::qt_metacast(nullptr), nullptr);
}

TEST_F(MetaObject, CallsGoStraightToTheBaseClass) {
    QThread plain;
    void* arguments[] = {nullptr, nullptr};
    for (int id : {1000, 50}) {
        const int left = plain.qt_metacall(QMetaObject::InvokeMetaMethod, id, arguments);
        EXPECT_LT(left, id); // the bases have methods of their own
        EXPECT_EQ(driver.qt_metacall(QMetaObject::InvokeMetaMethod, id, arguments), left);
        EXPECT_EQ(driver.OVideoCaptureUnix::qt_metacall(QMetaObject::InvokeMetaMethod, id, arguments), left);
    }
}
