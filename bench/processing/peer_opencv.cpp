#include "bench/processing/workload.h"

#include <opencv2/imgproc.hpp>

namespace bench {

namespace {

cv::Mat matOf(Picture& picture) {
    switch (picture.layout) {
    case Layout::BGRA:
        return cv::Mat(picture.height, picture.width, CV_8UC4, picture.data());
    case Layout::RGB24:
        return cv::Mat(picture.height, picture.width, CV_8UC3, picture.data());
    case Layout::YUY2:
        return cv::Mat(picture.height, picture.width, CV_8UC2, picture.data());
    case Layout::I420:
        break;
    }
    return cv::Mat(picture.height * 3 / 2, picture.width, CV_8UC1, picture.data());
}

// -1: OpenCV has no such conversion.
int codeOf(Layout from, Layout to) {
    if (from == Layout::BGRA && to == Layout::I420)
        return cv::COLOR_BGRA2YUV_I420;
    if (from == Layout::RGB24 && to == Layout::I420)
        return cv::COLOR_BGR2YUV_I420;
    if (from == Layout::I420 && to == Layout::BGRA)
        return cv::COLOR_YUV2BGRA_I420;
    if (from == Layout::YUY2 && to == Layout::BGRA)
        return cv::COLOR_YUV2BGRA_YUY2;
    if (from == Layout::RGB24 && to == Layout::BGRA)
        return cv::COLOR_BGR2BGRA;
    return -1;
}

int interpolationOf(Filter filter) {
    switch (filter) {
    case Filter::None:
        return cv::INTER_NEAREST;
    case Filter::Bilinear:
        return cv::INTER_LINEAR;
    case Filter::Box:
        break;
    }
    return cv::INTER_AREA;
}

cv::Mat planeOf(Picture& picture, int index) {
    const int divisor = index == 0 ? 1 : 2;
    return cv::Mat(picture.height / divisor, picture.width / divisor, CV_8UC1, picture.plane(index));
}

} // namespace

Work openCvConversion(Picture& from, Picture& to, bool bottomUp) {
    const int code = codeOf(from.layout, to.layout);
    if (code < 0)
        return nullptr;
    cv::setNumThreads(1);
    cv::Mat source = matOf(from);
    cv::Mat target = matOf(to);
    if (!bottomUp)
        return [=]() mutable { cv::cvtColor(source, target, code); };
    cv::Mat upright = source.clone();
    return [=]() mutable {
        cv::flip(source, upright, 0);
        cv::cvtColor(upright, target, code);
    };
}

Work openCvScale(Picture& from, Picture& to, Filter filter) {
    if (from.layout != Layout::I420)
        return nullptr;
    cv::setNumThreads(1);
    const int interpolation = interpolationOf(filter);
    std::vector<cv::Mat> source, target;
    for (int i = 0; i < 3; ++i) {
        source.push_back(planeOf(from, i));
        target.push_back(planeOf(to, i));
    }
    return [=]() mutable {
        for (size_t i = 0; i < 3; ++i)
            cv::resize(source[i], target[i], target[i].size(), 0, 0, interpolation);
    };
}

} // namespace bench
