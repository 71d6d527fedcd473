#include "bridges/gstreamer/effect_element.h"

#include <gst/video/gstvideofilter.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "bridges/common/bridged_effect.h"
#include "bridges/gstreamer/frame_counter.h"
#include "bridges/gstreamer/names.h"
#include "bridges/gstreamer/picture.h"
#include "bridges/gstreamer/property.h"
#include "host/catalogue/catalogue.h"

namespace Nifikral::Gst {
namespace {

using MaybeError = std::optional<std::string>;

constexpr char durationName[] = "duration";

/// What all elements of one effect share: the data of their class.
struct ClassData {
    const EffectInfo* effect;
    std::vector<std::string> properties;  ///< the module's names, in the order of GObject's numbers, from 1
};

/// One element's effect and its place in the stream.
class Filter {
 public:
    explicit Filter(const ClassData& data) : m_data(data), m_effect(*TheBridgeModule().module, data.effect->name) {}

    // Called by any thread.
    MaybeError Set(const std::string& property, const GValue& value);
    /// Leaves the value of a property that was not set.
    void Get(const std::string& property, GValue& value);

    // Called by the stream's thread alone.
    void BeginSegment() { m_counter.BeginSegment(); }
    void BeginPictures();
    MaybeError Process(GstVideoFrame& picture, const GstBaseTransform& transform);

 private:
    const ClassData& m_data;
    FrameCounter m_counter;
    ScratchPicture m_scratch;
    std::atomic<int> m_duration = 0;  // 0: the stream's
    std::mutex m_mutex;               // of the effect
    BridgedEffect m_effect;
};

MaybeError Filter::Set(const std::string& property, const GValue& value) {
    if (property == durationName) {
        m_duration = g_value_get_int(&value);
        return std::nullopt;
    }
    const std::lock_guard lock(m_mutex);
    return m_effect.Set(property, TextOf(value));
}

void Filter::Get(const std::string& property, GValue& value) {
    if (property == durationName) return g_value_set_int(&value, m_duration);
    const std::lock_guard lock(m_mutex);
    if (const std::optional<std::string> text = m_effect.Text(property)) SetFromText(value, *text);
}

// An effect keeps tables for the size of the first picture that it saw.
void Filter::BeginPictures() {
    m_counter.ForgetLength();
    const std::lock_guard lock(m_mutex);
    m_effect.Renew();
}

MaybeError Filter::Process(GstVideoFrame& picture, const GstBaseTransform& transform) {
    const int position = m_counter.Position(*picture.buffer, transform.segment, picture.info);
    std::optional<int> duration = m_duration;
    if ((m_data.effect->traits & variesWithTime) && *duration == 0) {
        duration = m_counter.Length(transform.sinkpad, transform.segment, picture.info);
        if (!duration) return "the number of frames in the stream is not known; set the property \"duration\"";
    }
    GstVideoFrame* const work = PlanesStandAlone(picture) ? &picture : m_scratch.CopyOf(picture);
    if (!work) return "there is no memory for another picture";
    BorrowedFrame frame = FrameOf(*work, position);
    {
        const std::lock_guard lock(m_mutex);
        MaybeError error;
        if (*duration > 0) error = m_effect.Set(durationName, std::to_string(*duration));
        if (!error) error = m_effect.Process(frame, position);
        if (error) return error;
    }
    if (work != &picture && !gst_video_frame_copy(&picture, work)) return "a picture cannot be copied back";
    return std::nullopt;
}

struct Element {
    GstVideoFilter parent;
    Filter* filter;
};
struct ElementClass {
    GstVideoFilterClass parent;
    ClassData* data;
};

Filter& FilterOf(gpointer object) { return *static_cast<Element*>(object)->filter; }
const std::string& ModuleName(GObject* object, guint property) {
    return reinterpret_cast<ElementClass*>(G_OBJECT_GET_CLASS(object))->data->properties[property - 1];
}
gpointer ParentClass() { return g_type_class_peek(GST_TYPE_VIDEO_FILTER); }

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    if (const MaybeError refusal = FilterOf(object).Set(ModuleName(object, id), *value))
        GST_ELEMENT_WARNING(object, LIBRARY, SETTINGS, ("%s=%s is refused.", spec->name, TextOf(*value).c_str()),
                            ("%s; the property keeps its value", refusal->c_str()));
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    g_param_value_set_default(spec, value);
    FilterOf(object).Get(ModuleName(object, id), *value);
}

gboolean SinkEvent(GstBaseTransform* transform, GstEvent* event) {
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) FilterOf(transform).BeginSegment();
    return GST_BASE_TRANSFORM_CLASS(ParentClass())->sink_event(transform, event);
}

// Takes the properties from their control sources.
void BeforeTransform(GstBaseTransform* transform, GstBuffer* buffer) {
    const GstClockTime time = StreamTime(transform->segment, GST_BUFFER_PTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(time)) gst_object_sync_values(GST_OBJECT(transform), time);
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo*, GstCaps*, GstVideoInfo*) {
    try {
        FilterOf(filter).BeginPictures();
        return TRUE;
    } catch (const std::exception& error) {
        GST_ELEMENT_ERROR(filter, LIBRARY, INIT, ("%s", error.what()), (nullptr));
        return FALSE;
    }
}

GstFlowReturn TransformFrame(GstVideoFilter* filter, GstVideoFrame* picture) {
    const MaybeError error = FilterOf(filter).Process(*picture, *GST_BASE_TRANSFORM(filter));
    if (!error) return GST_FLOW_OK;
    GST_ELEMENT_ERROR(filter, LIBRARY, FAILED, ("The effect fails: %s.", error->c_str()), (nullptr));
    return GST_FLOW_ERROR;
}

void Initialise(GTypeInstance* instance, gpointer instanceClass) {
    reinterpret_cast<Element*>(instance)->filter = new Filter(*static_cast<ElementClass*>(instanceClass)->data);
}

void Finalise(GObject* object) {
    delete &FilterOf(object);
    G_OBJECT_CLASS(ParentClass())->finalize(object);
}

void InstallProperties(GObjectClass* objectClass, ClassData& data) {
    const BridgedEffect effect(*TheBridgeModule().module, data.effect->name);
    for (const PropertyInfo& property : effect.Properties()) {
        const bool isDuration = property.name == durationName;
        if (isDuration ? !(data.effect->traits & variesWithTime) : !IsNumber(property)) continue;
        data.properties.push_back(property.name);
        g_object_class_install_property(objectClass, guint(data.properties.size()),
                                        isDuration ? DurationSpec() : SpecOf(*data.effect, property));
    }
}

void InitialiseClass(gpointer elementClass, gpointer classData) {
    ClassData& data = *static_cast<ClassData*>(classData);
    static_cast<ElementClass*>(elementClass)->data = &data;

    auto* const object = G_OBJECT_CLASS(elementClass);
    object->set_property = SetProperty;
    object->get_property = GetProperty;
    object->finalize = Finalise;
    InstallProperties(object, data);

    auto* const element = GST_ELEMENT_CLASS(elementClass);
    const std::string summary = data.effect->summary;
    gst_element_class_set_metadata(element, Capitalised(summary).c_str(), "Filter/Effect/Video",
                                   ("Nifikral's effect " + std::string(data.effect->name) + ": " + summary).c_str(),
                                   "Nifikral");
    GstCaps* const caps = CapsOf(*data.effect);
    gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    GST_BASE_TRANSFORM_CLASS(elementClass)->sink_event = SinkEvent;
    GST_BASE_TRANSFORM_CLASS(elementClass)->before_transform = BeforeTransform;
    GST_VIDEO_FILTER_CLASS(elementClass)->set_info = SetInfo;
    GST_VIDEO_FILTER_CLASS(elementClass)->transform_frame_ip = TransformFrame;
}

GType RegisterType(const std::string& name, ClassData& data) {
    GTypeInfo info{};
    info.class_size = sizeof(ElementClass);
    info.class_init = InitialiseClass;
    info.class_data = &data;
    info.instance_size = sizeof(Element);
    info.instance_init = Initialise;
    return g_type_register_static(GST_TYPE_VIDEO_FILTER, name.c_str(), &info, GTypeFlags(0));
}

}  // namespace

bool RegisterElements(GstPlugin* plugin) {
    // GStreamer keeps a list of what a plug-in has until one of these is another one.
    const auto folder = std::filesystem::path(gst_plugin_get_filename(plugin)).parent_path().parent_path();
    const std::string places = folder.string() + G_SEARCHPATH_SEPARATOR_S + (folder / "nifikral").string();
    gst_plugin_add_dependency_simple(plugin, "NIFIKRAL_MODULE", places.c_str(), "libnifikral.so",
                                     GST_PLUGIN_DEPENDENCY_FLAG_NONE);
    const BridgeModule& bridge = TheBridgeModule();
    if (!bridge.module) {
        // A failure would be remembered whatever becomes of the module.
        g_warning("Nifikral's elements are not available: %s.", bridge.error.c_str());
        return true;
    }
    // Types live as long as the process.
    for (const EffectInfo& effect : Catalogue()) {
        if ((effect.traits & generator) || !bridge.module->Create(effect.name)) continue;
        const std::string name = ElementName(effect.name);
        const GType type = RegisterType(TypeName(name), *new ClassData{&effect, {}});
        if (!gst_element_register(plugin, name.c_str(), GST_RANK_NONE, type)) return false;
    }
    return true;
}

}  // namespace Nifikral::Gst
