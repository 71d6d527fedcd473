#include <array>
#include <cmath>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/peers.h"

namespace Bench {
namespace {

using Mat = cv::Mat;
constexpr unsigned alphaPlane = 3;

Mat PlaneOf(CRawVideoFrame& frame, unsigned plane) {
    unsigned rowBytes = 0, pitch = 0, rows = 0;
    unsigned char* const data = frame.GetBuffer(plane, &rowBytes, &pitch, &rows);
    return frame.IsPacked() ? Mat(int(rows), int(rowBytes / 4), CV_8UC4, data, pitch)
                            : Mat(int(rows), int(rowBytes), CV_8UC1, data, pitch);
}

// op(picture, scratch) on each colour plane; the scratch of a plane lives as long as the work.
template <class Op>
Work EachPlane(Op op) {
    return [op, scratch = std::array<Mat, 3>()](CRawVideoFrame& frame) mutable {
        for (unsigned p = 0; p < std::min(3u, frame.GetBufferCount()); ++p) {
            Mat picture = PlaneOf(frame, p);
            op(picture, scratch[p]);
        }
    };
}

template <class Op>
void RegisterBoth(const char* row, Op op) {
    RegisterPeer(row, EachPlane(op), EachPlane(op));
}

Work Convolve(std::initializer_list<float> weights, double offset) {
    const int rows = weights.size() == 2 ? 2 : 3;
    const Mat kernel = Mat(std::vector<float>(weights), true).reshape(1, rows);
    return EachPlane([=](Mat& picture, Mat& out) { cv::filter2D(picture, out, -1, kernel, {-1, -1}, offset); });
}

enum class Move { Swirl, InsideOut, Scatter };

// A table of sources for a plane of this size, as cv::remap likes it best.
Mat SourceMap(cv::Size size, Move move) {
    Mat map(size, CV_16SC2);
    if (move == Move::Scatter) {
        cv::randu(map, cv::Scalar::all(-6), cv::Scalar::all(7));
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) map.at<cv::Vec2s>(y, x) += cv::Vec2s(short(x), short(y));
        return map;
    }
    const bool swirl = move == Move::Swirl;
    const double cx = size.width / 2.0, cy = size.height / 2.0, radius = std::hypot(cx, cy);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double dx = x - cx, dy = y - cy, r = std::hypot(dx, dy) + 1e-9;
            const double turn = swirl ? 2 * (1 - r / radius) : 0, zoom = swirl ? 1 : (radius - r) / r;
            const double sx = cx + zoom * (dx * std::cos(turn) - dy * std::sin(turn));
            const double sy = cy + zoom * (dx * std::sin(turn) + dy * std::cos(turn));
            map.at<cv::Vec2s>(y, x) = {cv::saturate_cast<short>(sx), cv::saturate_cast<short>(sy)};
        }
    return map;
}

void RegisterRemap(const char* row, Move move) {
    const auto remap = [move] {
        return [move, map = Mat()](Mat& picture, Mat& out) mutable {
            if (map.size() != picture.size()) map = SourceMap(picture.size(), move);
            cv::remap(picture, out, map, Mat(), cv::INTER_NEAREST, cv::BORDER_REPLICATE);
        };
    };
    const Work packed = EachPlane(remap());
    // One map a plane: the chroma planes are smaller.
    const auto planar = [luma = remap(), chroma = remap(), out = std::array<Mat, 3>()](CRawVideoFrame& frame) mutable {
        for (unsigned p = 0; p < 3; ++p) {
            Mat picture = PlaneOf(frame, p);
            p == 0 ? luma(picture, out[p]) : chroma(picture, out[p]);
        }
    };
    RegisterPeer(row, packed, planar);
}

// Two eyes' views through maps ready for linear interpolation, shifted by up to a fortieth of the width.
Work TwoViews() {
    struct Maps {
        Mat whole, parts;
    };
    return EachPlane([maps = std::map<int, std::array<Maps, 2>>()](Mat& picture, Mat& out) mutable {
        auto& eyes = maps[picture.cols];
        for (int eye = 0; eye < 2; ++eye) {
            Maps& map = eyes[std::size_t(eye)];
            if (map.whole.empty()) {
                Mat places(picture.size(), CV_32FC2);
                for (int y = 0; y < picture.rows; ++y)
                    for (int x = 0; x < picture.cols; ++x) {
                        const float shift = float(picture.cols) / 40 * (float(y) / float(picture.rows) - 0.5f);
                        places.at<cv::Vec2f>(y, x) = {float(x) + (eye ? shift : -shift), float(y)};
                    }
                cv::convertMaps(places, Mat(), map.whole, map.parts, CV_16SC2);
            }
            cv::remap(picture, out, map.whole, map.parts, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
        }
    });
}

void Gray(Mat& picture, Mat& scratch) {
    cv::cvtColor(picture, scratch, cv::COLOR_BGRA2GRAY);
    cv::cvtColor(scratch, picture, cv::COLOR_GRAY2BGRA);
}

void GrayChroma(CRawVideoFrame& frame) {
    for (unsigned p : {1u, 2u}) PlaneOf(frame, p).setTo(127);
}

void Edges(Mat& picture, Mat& out) {
    Mat across, down;
    cv::Sobel(picture, across, CV_16S, 1, 0);
    cv::Sobel(picture, down, CV_16S, 0, 1);
    Mat acrossFloat, downFloat, length;
    across.reshape(1).convertTo(acrossFloat, CV_32F);
    down.reshape(1).convertTo(downFloat, CV_32F);
    cv::magnitude(acrossFloat, downFloat, length);
    length.convertTo(out, CV_8U);
}

void Mosaic(Mat& picture, Mat& small) {
    cv::resize(picture, small, picture.size() / 8, 0, 0, cv::INTER_NEAREST);
    cv::resize(small, picture, picture.size(), 0, 0, cv::INTER_NEAREST);
}

void Magnify(Mat& picture, Mat& scratch) {
    const int height = picture.rows * 800 / 1080;  // the box of a circle of radius 400 in a full frame
    const cv::Point centre(picture.cols / 2, picture.rows / 2);
    const auto box = [&](int side) { return cv::Rect(centre.x - side / 2, centre.y - side / 2, side, side); };
    picture(box(height * 2 / 5)).copyTo(scratch);
    cv::resize(scratch, picture(box(height)), {height, height}, 0, 0, cv::INTER_LINEAR);
}

void Stretch(Mat& picture, Mat& out) {
    const cv::Rect middle(picture.cols / 6, picture.rows / 6, picture.cols * 2 / 3, picture.rows * 2 / 3);
    cv::resize(picture(middle), out, picture.size(), 0, 0, cv::INTER_NEAREST);
}

void Mirage(Mat& picture, Mat& scratch) {
    const cv::Rect middle(picture.cols / 42, picture.rows / 42, picture.cols * 20 / 21, picture.rows * 20 / 21);
    cv::resize(picture(middle), scratch, picture.size(), 0, 0, cv::INTER_NEAREST);
    cv::addWeighted(picture, 0.9, scratch, 0.1, 0, picture);
}

void Spotlight(Mat& picture, Mat& light) {
    if (light.size() != picture.size()) light = Mat(picture.size(), picture.type(), cv::Scalar(40, 40, 40, 0));
    cv::add(picture, light, picture);
}

void Wall(Mat& picture, Mat& tile) {
    cv::resize(picture, tile, picture.size() / 3, 0, 0, cv::INTER_NEAREST);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) tile.copyTo(picture(cv::Rect({x * tile.cols, y * tile.rows}, tile.size())));
}

// A quarter turn, as high as the picture, in the middle of black.
void Turn(Mat& picture, Mat& scratch) {
    const int width = picture.rows * picture.rows / picture.cols, left = (picture.cols - width) / 2;
    Mat turned;
    cv::rotate(picture, turned, cv::ROTATE_90_CLOCKWISE);
    cv::resize(turned, scratch, {width, picture.rows}, 0, 0, cv::INTER_AREA);
    picture.setTo(0);
    scratch.copyTo(picture(cv::Rect(left, 0, width, picture.rows)));
}

Mat ToneTable(bool packed) {
    Mat table(1, 256, packed ? CV_8UC4 : CV_8UC1);
    for (int i = 0; i < 256; ++i) {
        const auto tone = cv::saturate_cast<unsigned char>((i - 127) * 1.3 + 178);
        if (packed)
            table.at<cv::Vec4b>(i) = {tone, tone, tone, (unsigned char)i};
        else
            table.at<unsigned char>(i) = tone;
    }
    return table;
}

}  // namespace

void RegisterOpenCv() {
    cv::setNumThreads(1);
    RegisterPeer("gray OpenCV", EachPlane(Gray), GrayChroma);
    RegisterPeer("invert OpenCV", EachPlane([](Mat& m, Mat&) { cv::bitwise_xor(m, cv::Scalar(255, 255, 255, 0), m); }),
                 EachPlane([](Mat& m, Mat&) { cv::bitwise_not(m, m); }));
    RegisterPeer("flip_color OpenCV", EachPlane([](Mat& m, Mat&) { cv::cvtColor(m, m, cv::COLOR_BGRA2RGBA); }),
                 nullptr);
    RegisterPeer("brightness_contrast OpenCV",
                 EachPlane([table = ToneTable(true)](Mat& m, Mat&) { cv::LUT(m, table, m); }),
                 [table = ToneTable(false)](CRawVideoFrame& frame) {
                     Mat luma = PlaneOf(frame, 0);
                     cv::LUT(luma, table, luma);
                 });
    const auto fade = [](CRawVideoFrame& frame) {
        Mat alpha = PlaneOf(frame, alphaPlane);
        alpha.convertTo(alpha, -1, 0.4);
    };
    RegisterPeer("fadein OpenCV", EachPlane([](Mat& m, Mat&) { cv::multiply(m, cv::Scalar(1, 1, 1, 0.4), m); }), fade,
                 formatPlanarAlpha, alphaPlane);
    RegisterPeer("transparency OpenCV", EachPlane([](Mat& m, Mat&) { cv::multiply(m, cv::Scalar(1, 1, 1, 0.4), m); }),
                 fade, formatPlanarAlpha, alphaPlane);
    RegisterPeer("directfadein OpenCV",
                 EachPlane([](Mat& m, Mat&) { cv::multiply(m, cv::Scalar(0.4, 0.4, 0.4, 1), m); }),
                 [](CRawVideoFrame& frame) {
                     for (unsigned p = 0; p < 3; ++p) {
                         Mat plane = PlaneOf(frame, p);
                         plane.convertTo(plane, -1, 0.4, p == 0 ? 9.6 : 76.8);
                     }
                 });
    RegisterPeer("colorfilter OpenCV",
                 EachPlane([](Mat& m, Mat&) { cv::multiply(m, cv::Scalar(0.52, 0.76, 1, 1), m); }), nullptr);
    RegisterPeer("popstyle OpenCV", EachPlane([table = ToneTable(true)](Mat& m, Mat& gray) {
                     cv::cvtColor(m, gray, cv::COLOR_BGRA2GRAY);
                     cv::cvtColor(gray, m, cv::COLOR_GRAY2BGRA);
                     cv::LUT(m, table, m);
                 }),
                 nullptr);
    RegisterBoth("simple_gauss_blur OpenCV", [](Mat& m, Mat& out) { cv::GaussianBlur(m, out, {3, 3}, 0); });
    const Work sharpen = Convolve({-1, -1, -1, -1, 9, -1, -1, -1, -1}, 0);
    RegisterPeer("simple_laplacian_sharpen OpenCV", sharpen, sharpen);
    const Work emboss = Convolve({-3, 3}, 128);
    RegisterPeer("emboss OpenCV", emboss, emboss);
    const Work relief = Convolve({-1, -0.7f, 0, -0.7f, 1, 0.7f, 0, 0.7f, 1}, 0);
    RegisterPeer("relief OpenCV", relief, relief);
    RegisterBoth("erode OpenCV", [](Mat& m, Mat& out) { cv::erode(m, out, Mat()); });
    RegisterBoth("dilate OpenCV", [](Mat& m, Mat& out) { cv::dilate(m, out, Mat()); });
    RegisterBoth("mosaic OpenCV", Mosaic);
    RegisterBoth("edgelight OpenCV", Edges);
    RegisterRemap("rotate OpenCV", Move::Swirl);
    RegisterRemap("mirrorinvert OpenCV", Move::InsideOut);
    RegisterRemap("atomize OpenCV", Move::Scatter);
    RegisterBoth("magnifier OpenCV", Magnify);
    RegisterBoth("tensile OpenCV", Stretch);
    RegisterBoth("mirage OpenCV", Mirage);
    RegisterBoth("spotlight OpenCV", Spotlight);
    RegisterBoth("reverse mirror OpenCV", [](Mat& m, Mat&) { cv::flip(m, m, 1); });
    RegisterBoth("reverse vertical OpenCV", [](Mat& m, Mat&) { cv::flip(m, m, 0); });
    RegisterBoth("EffectNameRotate90X OpenCV", Turn);
    RegisterBoth("videowall OpenCV", Wall);
    RegisterPeer("2D_3D_TransForm OpenCV", TwoViews(), TwoViews());
    RegisterBoth("stroke OpenCV", [](Mat& m, Mat& mean) {
        cv::blur(m, mean, {7, 7});
        cv::divide(m, mean, m, 255);
    });
    RegisterBoth("addnoise OpenCV", [](Mat& m, Mat& n) {
        if (n.empty()) n = Mat(m.size(), CV_MAKETYPE(CV_16S, m.channels()));
        cv::randn(n, cv::Scalar::all(0), cv::Scalar(15, 15, 15, 0));
        cv::add(m, n, m, cv::noArray(), m.type());
    });
}

}  // namespace Bench
