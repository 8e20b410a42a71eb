#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/PubSub.h>

// Subscribers of one bus message each, forwarding it to a hook named after the message, so that
// a class built on model views (whose own notify overloads are private) handles further messages
// without hiding those overloads.
namespace ImportListeners {

class EDITORUTIL_EXPORT FileOpenFailed : public PubSub::Subscriber<Media::FileOpenFailedNotification>
{
protected:
    virtual void fileOpenFailed(const Media::FileOpenFailedNotification& notification) = 0;

private:
    void notify(const Media::FileOpenFailedNotification& notification) final { fileOpenFailed(notification); }
};

class EDITORUTIL_EXPORT FileAdding : public PubSub::Subscriber<Timeline::FileAddingNotification>
{
protected:
    virtual void fileAdding(const Timeline::FileAddingNotification& notification) = 0;

private:
    void notify(const Timeline::FileAddingNotification& notification) final { fileAdding(notification); }
};

class EDITORUTIL_EXPORT AllFilesProcessed : public PubSub::Subscriber<Timeline::AllFilesProcessedNotification>
{
protected:
    virtual void allFilesProcessed(const Timeline::AllFilesProcessedNotification& notification) = 0;

private:
    void notify(const Timeline::AllFilesProcessedNotification& notification) final { allFilesProcessed(notification); }
};

} // namespace ImportListeners
