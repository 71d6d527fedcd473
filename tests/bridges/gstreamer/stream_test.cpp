#include <gst/controller/controller.h>

#include <thread>

#include "bridges/gstreamer/frame_counter.h"
#include "tests/bridges/gstreamer/element_pair.h"

namespace Nifikral::Gst::Testing {
namespace {

Picture RandomPicture(const Format& format, unsigned width, unsigned height, unsigned seed = 1) {
    Picture picture(format, width, height, OwnLayout(format, width, height));
    std::mt19937 random(seed);
    picture.frame.Randomise(random);
    return picture;
}

GstSegment TimeSegment(GstClockTime start, GstClockTime stop, GstClockTime time) {
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.position = start;
    segment.stop = stop;
    segment.time = time;
    return segment;
}

void Push(const ElementHarness& element, const GstSegment& segment) {
    ASSERT_TRUE(gst_harness_push_event(element, gst_event_new_segment(&segment)));
}

TEST(GStreamerStream, WorksInTheBuffersOwnMemory) {
    ElementHarness element("nifikral-invert");
    Picture picture = RandomPicture(i420, 16, 8);
    element.Begin(picture);
    BufferPtr buffer = picture.Buffer();
    GstBuffer* const own = buffer.get();
    GstMemory* const memory = gst_buffer_peek_memory(own, 0);
    const BufferPtr made = element.Process(std::move(buffer));
    EXPECT_EQ(made.get(), own);
    EXPECT_EQ(gst_buffer_peek_memory(made.get(), 0), memory);
}

TEST(GStreamerStream, LeavesWhatOthersHold) {
    ElementHarness element("nifikral-invert");
    Picture picture = RandomPicture(i420, 16, 8);
    element.Begin(picture);
    const BufferPtr held = picture.Buffer();
    const std::vector<unsigned char> bytes = BytesOf(*held);
    // The buffer itself has another owner; the buffer is new and its memory has.
    for (GstBuffer* const shared : {gst_buffer_ref(held.get()), gst_buffer_copy(held.get())}) {
        const BufferPtr made = element.Process(BufferPtr(shared));
        EXPECT_EQ(BytesOf(*held), bytes);
        EXPECT_NE(BytesOf(*made), bytes);
    }
}

TEST(GStreamerStream, BeginsAnewWithPicturesOfAnotherSize) {
    Pair pair("tilereflect");
    pair.Set("tilereflect_size", "7");
    for (const auto& [width, height] : {std::pair(21u, 13u), std::pair(40u, 30u), std::pair(12u, 12u)}) {
        Picture picture = RandomPicture(i420, width, height);
        pair.element.Begin(picture);
        pair.effect = AVBased::Testing::MakeEffect("tilereflect", {{"tilereflect_size", "7"}});
        for (const int position : {0, 1}) EXPECT_TRUE(pair.Agree(picture, position));
    }
    gint size = 0;
    g_object_get(pair.element.Object(), "size", &size, nullptr);
    EXPECT_EQ(size, 7);
}

TEST(GStreamerStream, TakesPropertiesFromControlSources) {
    Pair pair("brightness_contrast");
    Picture picture = RandomPicture(bgra, 8, 8);
    pair.element.Begin(picture);
    GstControlSource* const source = gst_interpolation_control_source_new();
    g_object_set(source, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
    gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(source), 0, 0);
    gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(source), 100 * frameTime, 50);
    auto* const object = GST_OBJECT(pair.element.Object());
    gst_object_add_control_binding(object, gst_direct_control_binding_new_absolute(object, "brightness", source));
    gst_object_unref(source);
    for (const auto& [position, brightness] : {std::pair(0, "0"), std::pair(50, "25"), std::pair(60, "30")}) {
        pair.effect->SetProperty("brightness", brightness);
        EXPECT_EQ(pair.Agree(picture, position), position > 0);
    }
}

TEST(GStreamerStream, ChangesPropertiesBetweenPictures) {
    Pair pair("mosaic");
    Picture picture = RandomPicture(bgra, 32, 32);
    pair.element.Begin(picture);
    pair.Set("mosaic_x2", "30");
    pair.Set("mosaic_y2", "30");
    for (const char* const step : {"2", "3", "4"}) {
        pair.Set("mosaic_step", step);
        EXPECT_TRUE(pair.Agree(picture, 0));
    }
}

TEST(GStreamerStream, FadesOverItsWholeLength) {
    Pair pair("directfadein");
    Picture picture = RandomPicture(bgra, 8, 8);
    pair.element.Begin(picture);
    pair.element.Set("duration", "0");
    // From second 1 to second 4 of a stream, which begins at 10 in the time of the buffers: 100 frames.
    Push(pair.element, TimeSegment(10 * GST_SECOND, 13 * GST_SECOND, 1 * GST_SECOND));
    pair.effect->SetProperty("duration", "100");
    EXPECT_TRUE(pair.Agree(picture, 25 + 10, 10 * GST_SECOND + 10 * frameTime));

    // What comes before knows it better.
    const auto answer = [](GstPad*, GstPadProbeInfo* info, gpointer) {
        GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_DURATION) return GST_PAD_PROBE_OK;
        gst_query_set_duration(query, GST_FORMAT_TIME, 8 * GST_SECOND);
        return GST_PAD_PROBE_HANDLED;
    };
    GstHarness* const harness = pair.element;
    gst_pad_add_probe(harness->srcpad, GST_PAD_PROBE_TYPE_QUERY_UPSTREAM, answer, nullptr, nullptr);
    Push(pair.element, TimeSegment(0, 3 * GST_SECOND, 0));
    pair.effect->SetProperty("duration", "200");
    EXPECT_TRUE(pair.Agree(picture, 50));

    // And the property best.
    pair.Set("duration", "80");
    EXPECT_TRUE(pair.Agree(picture, 51));
}

TEST(GStreamerStream, FailsWhereAFadeHasNoLength) {
    ElementHarness element("nifikral-directfadeout");
    Picture picture = RandomPicture(bgra, 8, 8);
    element.Begin(picture);
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(GST_ELEMENT(element.Object()), bus);
    EXPECT_FALSE(element.Process(picture.Buffer(0)));
    GstMessage* const message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    ASSERT_TRUE(message);
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    EXPECT_STREQ(error->message,
                 "The effect fails: the number of frames in the stream is not known; set the property \"duration\".");
    g_error_free(error);
    gst_message_unref(message);
    gst_element_set_bus(GST_ELEMENT(element.Object()), nullptr);
    gst_object_unref(bus);
}

TEST(GStreamerStream, RunsInSeveralThreads) {
    const auto run = [](const char* name) {
        Pair pair(name);
        for (unsigned seed = 0; seed < 50; ++seed) {
            Picture picture = RandomPicture(bgra, 40, 40, seed);
            if (seed % 10 == 0) pair.element.Begin(picture);
            pair.Agree(picture, int(seed));
        }
    };
    std::thread other(run, "portrait");
    run("directfadein");
    other.join();
}

GstVideoInfo InfoOf(int rate, int per) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, 8, 8);
    GST_VIDEO_INFO_FPS_N(&info) = rate;
    GST_VIDEO_INFO_FPS_D(&info) = per;
    return info;
}

TEST(GStreamerFrameCounter, NumbersFramesByTheirTimesThoughTheyAreInMilliseconds) {
    const GstVideoInfo info = InfoOf(30000, 1001);
    const GstSegment segment = TimeSegment(0, GST_CLOCK_TIME_NONE, 0);
    FrameCounter counter;
    const BufferPtr buffer(gst_buffer_new());
    for (const int frame : {0, 1, 2, 1000, 107891, 5}) {
        const guint64 milliseconds = gst_util_uint64_scale_round(guint64(frame), 1001, 30);
        GST_BUFFER_PTS(buffer.get()) = milliseconds * GST_MSECOND;
        EXPECT_EQ(counter.Position(*buffer, segment, info), frame);
    }
}

TEST(GStreamerFrameCounter, CountsWhereThereIsNoTimeOrRate) {
    const GstSegment segment = TimeSegment(0, GST_CLOCK_TIME_NONE, 0);
    FrameCounter counter;
    const BufferPtr buffer(gst_buffer_new());
    GST_BUFFER_PTS(buffer.get()) = 7 * GST_SECOND;
    for (const int frame : {0, 1}) EXPECT_EQ(counter.Position(*buffer, segment, InfoOf(0, 1)), frame);
    EXPECT_EQ(counter.Position(*buffer, segment, InfoOf(25, 1)), 175);
    GST_BUFFER_PTS(buffer.get()) = GST_CLOCK_TIME_NONE;
    EXPECT_EQ(counter.Position(*buffer, segment, InfoOf(25, 1)), 176);
    counter.BeginSegment();
    EXPECT_EQ(counter.Position(*buffer, segment, InfoOf(25, 1)), 0);
}

}  // namespace
}  // namespace Nifikral::Gst::Testing
