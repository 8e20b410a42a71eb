#pragma once

#include <Util/Editor/AbstractEditor.h>
#include <Util/Interfaces/EditorModel.h>

#include <functional>
#include <set>

// The root of a panel's editor tree: the worker the model calls when an edit session
// begins (onLoad), is committed (onApply) or discarded (onReset). Each call is announced as
// the matching AbstractEditor signal, which chained editors pass down the tree.
//
// The model also asks whether clips may be taken into the session (the acceptor, required)
// and to narrow a set of clips to those the session handles (the filter, optional).
class EDITORUTIL_EXPORT ModelEditor : public AbstractEditor, public Editor::WorkerView
{
    Q_OBJECT

public:
    using Acceptor = std::function<bool(const std::set<const Timeline::Clip*>&, const Timeline::Object*)>;
    using Filter = std::function<void(std::set<const Timeline::Clip*>&, const Timeline::Object*)>;

    ModelEditor(Acceptor acceptor, Filter filter);
    ~ModelEditor() override;

    void onLoad() override;
    void onApply() override;
    void onReset() override;
    // Asks the acceptor about `clips` on the edited timeline; an empty acceptor throws
    // std::bad_function_call.
    bool canAccept(const std::set<const Timeline::Clip*>& clips) const override;
    // Lets the filter narrow `clips`; without a filter the set stays as it is.
    void filterClips(std::set<const Timeline::Clip*>& clips) const override;

signals:
    // The model's editing state changed: `to` is the record now, `from` its value before
    // (valid only during the emission).
    void editorStateChanged(const Editor::Object* to, const Editor::Object* from);

private:
    void editorChanged(const Editor::Object* current, const Editor::Object* previous) override;
    const Timeline::Object* editedTimeline() const;

    Acceptor m_acceptor;
    Filter m_filter;
};

Q_DECLARE_METATYPE(const Editor::Object*)
