#include "Panels.h"

#include <Util/Format.h>
#include <Util/Import/DragAndDropHandler.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Preview/AnimationPreviewProvider.h>
#include <Util/Preview/CalloutPreviewProvider.h>
#include <Util/Preview/ColorFilterPreviewProvider.h>
#include <Util/Preview/EffectPreviewProvider.h>
#include <Util/Preview/PanZoomPreviewProvider.h>
#include <Util/Preview/PreviewPicture.h>
#include <Util/Preview/QuizPreviewProvider.h>
#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>
#include <Util/Preview/TitlePreviewProvider.h>
#include <Util/Preview/TransitionPreviewProvider.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QTreeWidget>
#include <QUndoStack>
#include <QVBoxLayout>

namespace Sandbox {

namespace {

QString msText(Types::Time time) { return Format::timeMs(time / Types::TimeUnitsPerMillisecond); }

// The picture clip under `position`: overlay video first, then the main track. A clip whose
// end edge is at `position` counts when nothing starts there (playback stops on that edge).
const Timeline::Clip* clipUnder(const Timeline::Object* timeline, Types::Time position)
{
    const Timeline::Clip* ending = nullptr;
    for (const Timeline::Track* track : {timeline->extraVideoTrack(), timeline->primaryTrack()}) {
        for (const Timeline::Clip* clip : timeline->clipsOnTrack(track)) {
            const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
            if (!clip->file())
                continue;
            if (position >= timing.start() && position < timing.end())
                return clip;
            if (position == timing.end() && !ending)
                ending = clip;
        }
    }
    return ending;
}

} // namespace

PreviewPanel::PreviewPanel(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    m_note = new QLabel(this);
    m_note->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_note);
    m_picture = new QLabel(this);
    m_picture->setFixedSize(frameWidth, frameHeight);
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setStyleSheet(QStringLiteral("background: black; color: #888;"));
    m_caption = new QLabel(this);
    m_caption->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_picture, 0, Qt::AlignHCenter);
    layout->addWidget(m_caption);
    layout->addStretch();
}

PreviewPanel::~PreviewPanel() = default;

QPixmap PreviewPanel::picture() const { return m_picture->pixmap(Qt::ReturnByValue); }

void PreviewPanel::setNote(const QString& note) { m_note->setText(note); }

void PreviewPanel::showPicture(const QImage& picture, const QString& caption)
{
    m_clip = nullptr;
    m_wantedResource.clear();
    m_showsPicture = true;
    m_picture->setPixmap(QPixmap::fromImage(picture));
    m_caption->setText(caption);
    m_shown = true;
    emit frameArrived();
}

void PreviewPanel::showFrame(const Timeline::Object* timeline, Types::Time position)
{
    m_showsPicture = false;
    m_clip = timeline ? clipUnder(timeline, position) : nullptr;
    if (!m_clip) {
        m_wantedResource.clear();
        m_picture->clear();
        m_picture->setText(tr("Nothing under the playhead"));
        m_caption->setText(msText(position));
        m_shown = true;
        return;
    }
    const Timeline::ClipTiming& timing = timeline->clipTiming(m_clip);
    m_caption->setText(QStringLiteral("%1   %2").arg(m_clip->name().toQString(), msText(position)));
    if (m_clip->isBroken() || !m_clip->file()->isOpened()) {
        m_wantedResource.clear();
        m_picture->clear();
        m_picture->setText(tr("Media missing"));
        m_shown = true;
        return;
    }
    const auto resource = Resource::encode(m_clip);
    const std::string key = std::get<0>(resource);
    Util::ThumbnailRequester*& requester = m_requesters[key];
    if (!requester) {
        requester = new Util::ThumbnailRequester(resource, this);
        requester->setSize(frameWidth, frameHeight);
        requester->setResizeMode(Util::ThumbnailRequester::KeepAspectRatio);
        requester->setPaddingColor(Qt::black);
        connect(requester, &Util::ThumbnailRequester::thumbnailReady, this,
                [this, key](Types::Time time, const QPixmap& pixmap) {
                    if (key != m_wantedResource || time != m_wantedTime)
                        return;
                    m_picture->setPixmap(pixmap);
                    m_shown = true;
                    emit frameArrived();
                });
    }
    const double media = double(position - timing.position) * timing.speed;
    const Types::Time length = Types::Time(double(timing.length) * timing.speed);
    m_wantedTime = timing.offset + Types::Time(timing.reversed ? double(length) - media : media);
    m_wantedResource = key;
    m_shown = false;
    requester->request(m_wantedTime);
}

// --- the browser of previews ------------------------------------------------------------------------

struct PreviewBrowser::Kind
{
    QString name;
    QStringList labels;
    // Puts item `index` into the provider's preview with `composition` (null: the preview ends).
    std::function<void(int index, const Composition::Object* composition)> present;
    // Packs item `index` as its drag carries it.
    std::function<void(QMimeData* data, int index)> pack;
};

namespace {

// The browser's list: an item dragged out carries what the browser packs for it.
class PresetList : public QTreeWidget
{
public:
    PresetList(std::function<QMimeData*(QTreeWidgetItem*)> pack, QWidget* parent)
        : QTreeWidget(parent), m_pack(std::move(pack))
    {
        setDragEnabled(true);
        setDragDropMode(QAbstractItemView::DragOnly);
    }

protected:
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override
    {
        return items.size() == 1 ? m_pack(items.front()) : nullptr;
    }

private:
    std::function<QMimeData*(QTreeWidgetItem*)> m_pack;
};

template <class X>
std::shared_ptr<const X> shared(X value)
{
    return std::make_shared<const X>(std::move(value));
}

Effect::Object effect(const std::string& collection, const char* id) { return Effect::Object(collection, id); }

Overlay::Preset overlay(const char* text, const QTransform& place = {})
{
    Overlay::Preset preset;
    preset.name = Types::String(text);
    preset.appendItem(Overlay::Item().setText(text).setTransform(Types::Transform(place)));
    return preset;
}

Quiz::Preset quiz(const char* question, std::vector<Types::String> answers, std::vector<int> correct)
{
    Quiz::Preset preset;
    preset.questions.push_back({Types::String(question), std::move(answers), std::move(correct)});
    return preset;
}

Animation::TransformationItem motion(const QString& name, const QTransform& from, const QTransform& to)
{
    Animation::TransformationItem item;
    item.name = Types::String(name);
    item.setKey(0, Transformation::Object().setMatrix(Types::Transform(from)));
    item.setKey(Types::TimeUnitsPerSecond, Transformation::Object().setMatrix(Types::Transform(to)));
    return item;
}

QTransform zoom(double factor, double dx = 0, double dy = 0)
{
    return QTransform::fromTranslate(dx, dy).scale(factor, factor);
}

} // namespace

PreviewBrowser::PreviewBrowser(ExclusiveService& player, QWidget* parent)
    : QWidget(parent), m_client(new ExclusiveClient(&player, this))
{
    m_composition.name = Types::String("Preview");
    m_composition.width = PreviewPanel::frameWidth;
    m_composition.height = PreviewPanel::frameHeight;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_list = new PresetList(
        [this](QTreeWidgetItem* item) {
            QTreeWidgetItem* kind = item->parent();
            return kind ? mimeDataFor(kind->text(0), kind->indexOfChild(item)) : nullptr;
        },
        this);
    m_list->setHeaderLabel(tr("Effects and presets"));
    layout->addWidget(m_list);

    const std::string video = EditorCollection::CollectionID::EFFECTS_VIDEO;
    const std::string filter = EditorCollection::CollectionID::FILTERS_COLOR;
    const auto packEffect = [](QMimeData* data, const Effect::Object& effect) {
        DragAndDropHandler::packEffect(data, effect);
    };
    const auto packOverlay = [](QMimeData* data, const Overlay::Preset& preset) {
        MimeUtils::packOverlayPresets(data, {&preset});
    };
    addKind<Effect::Object>(tr("Effects"), new EffectPreviewProvider(this), packEffect,
                            {{tr("Blur"), shared(effect(video, "blur"))},
                             {tr("Mirror"), shared(effect(video, "mirror"))},
                             {tr("Pixelate"), shared(effect(video, "pixelate"))},
                             {tr("Vignette"), shared(effect(video, "vignette"))}});
    addKind<Effect::Object>(tr("Colour filters"), new ColorFilterPreviewProvider(this), packEffect,
                            {{tr("Black and white"), shared(effect(filter, "grayscale"))},
                             {tr("Sepia"), shared(effect(filter, "sepia"))},
                             {tr("Warm"), shared(effect(filter, "warm"))},
                             {tr("Cool"), shared(effect(filter, "cool"))},
                             {tr("Negative"), shared(effect(filter, "invert"))}});
    addKind<Transition::Object>(tr("Transitions"), new TransitionPreviewProvider(this),
                                &DragAndDropHandler::packTransition,
                                {{tr("Crossfade"), shared(Transition::Object("crossfade"))},
                                 {tr("Wipe"), shared(Transition::Object("wipe"))},
                                 {tr("Slide"), shared(Transition::Object("slide"))},
                                 {tr("Dip to black"), shared(Transition::Object("dip"))}});
    addKind<Overlay::Preset>(tr("Titles"), new TitlePreviewProvider(this), packOverlay,
                             {{tr("Opening title"), shared(overlay("My holiday"))},
                              {tr("Lower third"), shared(overlay("Anna, 2026", QTransform::fromTranslate(0, 90)))}});
    addKind<Overlay::Preset>(
        tr("Callouts"), new CalloutPreviewProvider(this), packOverlay,
        {{tr("Look here"), shared(overlay("Look here!", QTransform::fromTranslate(-120, -70)))},
         {tr("Note"), shared(overlay("Note: sunset at 19:40", QTransform::fromTranslate(80, 60)))}});
    addKind<Quiz::Preset>(
        tr("Quizzes"), new QuizPreviewProvider(this), &DragAndDropHandler::packQuiz,
        {{tr("One answer"),
          shared(quiz("What rises in the east?", {Types::String("The sun"), Types::String("The sea")}, {0}))},
         {tr("Several answers"),
          shared(quiz("Which are green?", {Types::String("Hills"), Types::String("Sky"), Types::String("Grass")},
                      {0, 2}))}});
    addKind<Animation::TransformationItem>(
        tr("Pan and zoom"), new PanZoomPreviewProvider(this), &DragAndDropHandler::packPanAndZoom,
        {{tr("Close-up"), shared(motion(tr("Close-up"), zoom(1.8), zoom(1.8)))},
         {tr("Towards the sun"), shared(motion(tr("Towards the sun"), zoom(2.2, -150, 80), zoom(2.2, -150, 80)))}});
    addKind<Animation::TransformationItem>(
        tr("Animations"), new AnimationPreviewProvider(this), &DragAndDropHandler::packAnimation,
        {{tr("Fly in"), shared(motion(tr("Fly in"), QTransform::fromTranslate(-300, 0), QTransform()))},
         {tr("Grow"), shared(motion(tr("Grow"), zoom(0.2), zoom(2.0)))}},
        Types::TimeUnitsPerSecond / 2);
    m_list->expandAll();

    connect(m_list, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        if (QTreeWidgetItem* kind = item->parent())
            chosen(m_list->indexOfTopLevelItem(kind), kind->indexOfChild(item));
    });
    // Somebody else took the player: the preview ends.
    connect(m_client, &ExclusiveClient::released, this, [this] {
        m_list->clearSelection();
        if (auto end = std::exchange(m_endPreview, nullptr))
            end();
    });
}

PreviewBrowser::~PreviewBrowser()
{
    // A closing browser ends its preview quietly: its client gives the player back as it goes.
    disconnect(m_client, nullptr, this, nullptr);
}

template <class X, class Provider>
void PreviewBrowser::addKind(const QString& name, Provider* provider, void (*pack)(QMimeData*, const X&),
                             std::vector<std::pair<QString, std::shared_ptr<const X>>> items, std::int64_t position)
{
    auto kind = std::make_unique<Kind>();
    kind->name = name;
    auto* top = new QTreeWidgetItem(m_list, {name});
    top->setFlags(Qt::ItemIsEnabled);
    for (const auto& item : items) {
        kind->labels << item.first;
        new QTreeWidgetItem(top, {item.first});
    }
    kind->present = [provider, items, position](int index, const Composition::Object* composition) {
        auto chain = provider->previewChange(provider->preview());
        if (index >= 0)
            chain->target = items[std::size_t(index)].second.get();
        chain->position = position;
        chain->composition = composition;
    };
    kind->pack = [pack, items](QMimeData* data, int index) { pack(data, *items[std::size_t(index)].second); };
    // The player (re)starts the preview: its picture is drawn on the stock picture.
    connect(provider, &CompositionProvider::restartRequested, this, [this, provider] {
        emit pictureReady(PreviewPicture::draw(*provider->preview(), QSize(m_composition.width, m_composition.height)),
                          m_caption);
    });
    m_kinds.push_back(std::move(kind));
}

QMimeData* PreviewBrowser::mimeDataFor(const QString& kind, int index) const
{
    for (const std::unique_ptr<Kind>& k : m_kinds) {
        if (k->name != kind || index < 0 || index >= k->labels.size())
            continue;
        auto* data = new QMimeData;
        k->pack(data, index);
        return data;
    }
    return nullptr;
}

bool PreviewBrowser::choose(const QString& kind, int index)
{
    for (std::size_t k = 0; k < m_kinds.size(); ++k) {
        if (m_kinds[k]->name != kind || index < 0 || index >= m_kinds[k]->labels.size())
            continue;
        QTreeWidgetItem* item = m_list->topLevelItem(int(k))->child(index);
        m_list->setCurrentItem(item);
        chosen(int(k), index);
        return true;
    }
    return false;
}

void PreviewBrowser::chosen(int kind, int index)
{
    if (kind < 0 || std::size_t(kind) >= m_kinds.size())
        return;
    if (!m_client->acquire())
        return;
    if (auto end = std::exchange(m_endPreview, nullptr))
        end();
    Kind* chosenKind = m_kinds[std::size_t(kind)].get();
    m_caption = tr("%1: %2").arg(chosenKind->name, chosenKind->labels.at(index));
    chosenKind->present(index, &m_composition);
    m_endPreview = [chosenKind] { chosenKind->present(-1, nullptr); };
}

// --- the clip panel -----------------------------------------------------------------------------------

ClipPanel::ClipPanel(QUndoStack& undo, QWidget* parent) : QGroupBox(tr("Clip"), parent)
{
    m_adjustments.setUndoStack(&undo);
    m_form = new QFormLayout(this);
    m_name = new QLabel(this);
    m_media = new QLabel(this);
    m_media->setWordWrap(true);
    m_place = new QLabel(this);
    m_format = new QLabel(this);
    m_reversed = new QCheckBox(this);
    m_reversed->setObjectName(QStringLiteral("reverse"));
    m_speed = new QDoubleSpinBox(this);
    m_speed->setObjectName(QStringLiteral("speed"));
    // Wider than the provider allows: it refuses what it cannot play, and says why.
    m_speed->setRange(0.0, 20.0);
    m_speed->setSingleStep(0.25);
    m_speed->setSuffix(QStringLiteral("x"));
    m_speed->setKeyboardTracking(false);
    m_normalized = new QCheckBox(this);
    m_normalized->setObjectName(QStringLiteral("normalize"));
    m_stabilized = new QCheckBox(this);
    m_stabilized->setObjectName(QStringLiteral("stabilize"));
    m_filter = new QComboBox(this);
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->addItem(tr("None"), QString());
    for (const auto& [id, label] : {std::pair<const char*, QString>{"grayscale", tr("Black and white")},
                                    {"sepia", tr("Sepia")},
                                    {"warm", tr("Warm")},
                                    {"cool", tr("Cool")},
                                    {"invert", tr("Negative")}})
        m_filter->addItem(label, QString::fromLatin1(id));
    // Effects by id, the motion last with no id.
    m_given = new QListWidget(this);
    m_given->setObjectName(QStringLiteral("given"));
    m_given->setMaximumHeight(80);
    m_remove = new QPushButton(tr("Remove"), this);
    m_remove->setObjectName(QStringLiteral("remove"));
    m_message = new QLabel(this);
    m_message->setWordWrap(true);
    m_message->setStyleSheet(QStringLiteral("color: #a33;"));
    m_form->addRow(tr("Name"), m_name);
    m_form->addRow(tr("Media"), m_media);
    m_form->addRow(tr("On timeline"), m_place);
    m_form->addRow(tr("Format"), m_format);
    m_form->addRow(QString(), m_normalized);
    m_form->addRow(QString(), m_reversed);
    m_form->addRow(tr("Speed"), m_speed);
    m_form->addRow(QString(), m_stabilized);
    m_form->addRow(tr("Filter"), m_filter);
    m_form->addRow(tr("Given"), m_given);
    m_form->addRow(QString(), m_remove);
    m_form->addRow(m_message);

    // A user's change goes to the provider; a refused value goes back to the clip's.
    auto edited = [this](bool ok) {
        if (ok)
            m_message->clear();
        refresh();
    };
    for (const auto& [box, set] : {std::pair{m_normalized, &ClipAdjustmentsProvider::setNormalized},
                                   std::pair{m_reversed, &ClipAdjustmentsProvider::setReversed},
                                   std::pair{m_stabilized, &ClipAdjustmentsProvider::setStabilized}})
        connect(box, &QCheckBox::toggled, this, [this, edited, set = set](bool on) {
            if (!m_refreshing)
                edited((m_adjustments.*set)(on));
        });
    connect(m_speed, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [this, edited](double speed) {
        if (!m_refreshing)
            edited(m_adjustments.setSpeed(speed));
    });
    connect(m_filter, qOverload<int>(&QComboBox::currentIndexChanged), this, [this, edited](int index) {
        if (!m_refreshing)
            edited(m_adjustments.setFilter(m_filter->itemData(index).toString()));
    });
    connect(m_given, &QListWidget::currentRowChanged, this, [this](int row) { m_remove->setEnabled(row >= 0); });
    connect(m_remove, &QPushButton::clicked, this, [this, edited] {
        const QListWidgetItem* item = m_given->currentItem();
        if (!item)
            return;
        const QString id = item->data(Qt::UserRole).toString();
        edited(id.isEmpty() ? m_adjustments.removeMotion() : m_adjustments.removeEffect(id));
    });
    connect(&m_adjustments, &ClipAdjustmentsProvider::changeRefused, m_message,
            [this](Adjustment::Kind, const QString& reason) { m_message->setText(reason); });
    connect(&m_adjustments, &ClipAdjustmentsProvider::adjustmentsChanged, this, &ClipPanel::refresh);
    refresh();
}

void ClipPanel::setClip(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    if (clip != m_adjustments.clip())
        m_message->clear();
    m_adjustments.setClip(timeline && timeline->contains(clip) ? timeline : nullptr,
                          timeline && timeline->contains(clip) ? clip : nullptr);
    refresh();
}

void ClipPanel::refresh()
{
    m_refreshing = true;
    const Timeline::Object* timeline = m_adjustments.timeline();
    const Timeline::Clip* clip = m_adjustments.clip();
    for (const Adjustment& entry : m_adjustments.adjustments()) {
        QWidget* widget = nullptr;
        switch (entry.kind) {
        case Adjustment::Normalization:
            widget = m_normalized;
            m_normalized->setText(entry.title);
            m_normalized->setChecked(entry.value.toBool());
            break;
        case Adjustment::Reverse:
            widget = m_reversed;
            m_reversed->setText(entry.title);
            m_reversed->setChecked(entry.value.toBool());
            break;
        case Adjustment::Speed:
            widget = m_speed;
            m_speed->setValue(clip ? entry.value.toDouble() : 1.0);
            break;
        case Adjustment::Stabilization:
            widget = m_stabilized;
            m_stabilized->setText(entry.title);
            m_stabilized->setChecked(entry.value.toBool());
            break;
        case Adjustment::Filter:
            widget = m_filter;
            m_filter->setCurrentIndex(std::max(0, m_filter->findData(entry.value.toString())));
            break;
        }
        widget->setEnabled(entry.available);
        widget->setToolTip(entry.reason);
    }
    m_given->clear();
    const QStringList given = ClipAdjustmentsProvider::contentNames(clip);
    const std::vector<const Effect::Object*> effects = clip ? clip->effects() : std::vector<const Effect::Object*>();
    for (int i = 0; i < given.size(); ++i) {
        auto* item = new QListWidgetItem(given[i], m_given);
        if (i < int(effects.size()))
            item->setData(Qt::UserRole, QString::fromStdString(effects[i]->id()));
    }
    m_given->setEnabled(!given.isEmpty());
    m_remove->setEnabled(false);
    if (!clip) {
        m_name->setText(tr("No clip selected"));
        for (QLabel* label : {m_media, m_place, m_format})
            label->clear();
        m_refreshing = false;
        return;
    }
    const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
    m_name->setText(clip->name().toQString() + (clip->isBroken() ? tr(" (missing)") : QString()));
    const Media::File* file = clip->file();
    m_media->setText(file ? QFileInfo(file->path().toQString()).absolutePath() : QString());
    m_place->setText(tr("%1 to %2 (%3)").arg(msText(timing.start()), msText(timing.end()), msText(timing.length)));
    QString format;
    if (file && file->isOpened()) {
        if (const Media::Video* video = file->videoStream(clip->streamIndex()))
            format = Format::videoSettings(video);
        else if (const Media::Audio* audio = file->audioStream(clip->streamIndex()))
            format = Format::audioSettings(audio, 0, 0).trimmed();
    }
    m_format->setText(format);
    m_refreshing = false;
}

} // namespace Sandbox
