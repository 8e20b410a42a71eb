#pragma once

#include <EditorModel/Types.h>

#include <PubSub/Object.h>

#include <QImage>

#include <string>
#include <tuple>

namespace Resource {

// Kind of stream a resource identifier names.
enum Type
{
    Unknown = 0,
    Video = 1,
    Audio = 2
};

// A resource identifier: a text key ("<path>:v:<index>") and the kind of stream.
using Id = std::tuple<std::string, Type>;

} // namespace Resource

namespace Thumbnail {

// A request for a frame of a resource at a time and size; the thumbnail service answers by
// changing the record (its image), so the owner sees the frame as a change of its own record.
class Object : public virtual PubSub::Object
{
public:
    const Resource::Id& resource() const noexcept { return m_resource; }
    Object& setResource(const std::tuple<std::string, Resource::Type>& resource)
    {
        m_resource = resource;
        return *this;
    }
    Types::Time resourceDuration() const noexcept { return m_resourceDuration; }
    Object& setResourceDuration(Types::Time duration)
    {
        m_resourceDuration = duration;
        return *this;
    }
    Types::Time time() const noexcept { return m_time; }
    Object& setTime(Types::Time time)
    {
        m_time = time;
        return *this;
    }
    int width() const noexcept { return m_width; }
    Object& setWidth(int width)
    {
        m_width = width;
        return *this;
    }
    int height() const noexcept { return m_height; }
    Object& setHeight(int height)
    {
        m_height = height;
        return *this;
    }
    // Fit of the frame into the size (the requester's resize mode) and colour around it.
    int resizeMode() const noexcept { return m_resizeMode; }
    Object& setResizeMode(int mode)
    {
        m_resizeMode = mode;
        return *this;
    }
    unsigned paddingColor() const noexcept { return m_padding; }
    Object& setPaddingColor(unsigned argb)
    {
        m_padding = argb;
        return *this;
    }

    // The answer: the frame (null until answered) or a failure.
    const QImage& image() const noexcept { return m_image; }
    Object& setImage(const QImage& image)
    {
        m_image = image;
        return *this;
    }
    bool isFailed() const noexcept { return m_failed; }
    Object& setFailed(bool failed)
    {
        m_failed = failed;
        return *this;
    }
    bool isAnswered() const noexcept { return !m_image.isNull() || m_failed; }

private:
    Resource::Id m_resource{std::string(), Resource::Unknown};
    Types::Time m_resourceDuration = 0;
    Types::Time m_time = 0;
    int m_width = 0;
    int m_height = 0;
    int m_resizeMode = 2;
    unsigned m_padding = 0;
    QImage m_image;
    bool m_failed = false;
};

// What the model asks of the thumbnail service: to make the frame a new thumbnail record asks
// for. The service answers later, on the GUI thread, with Model::Host::answerThumbnail.
class Provider
{
public:
    virtual ~Provider();
    virtual void request(const Object* thumbnail) = 0;
    // The thumbnail record is gone: any work for it may stop.
    virtual void cancel(const Object* /*thumbnail*/) {}
};

} // namespace Thumbnail

namespace Task {

// A long-running job the editor shows progress of.
class Object : public virtual PubSub::Object
{
public:
    enum State
    {
        Waiting = 0,
        Running = 1,
        Finished = 2,
        Failed = 3
    };
    Types::String title;
    double progress = 0; // 0 to 1
    State state = Waiting;
};

} // namespace Task
