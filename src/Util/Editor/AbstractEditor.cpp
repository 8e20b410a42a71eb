#include "AbstractEditor.h"

AbstractEditor::AbstractEditor(QObject* parent) : QObject(parent) {}

AbstractEditor::~AbstractEditor() = default;
