#include "CompositionProvider.h"

CompositionProvider::CompositionProvider(QObject* parent) : QObject(parent) {}

CompositionProvider::~CompositionProvider() = default;

void CompositionProvider::activate() { emit activated(); }

void CompositionProvider::deactivate() { emit deactivated(); }

const Composition::Object* CompositionProvider::composition() const { return m_composition; }

void CompositionProvider::setComposition(const Composition::Object* composition)
{
    m_composition = composition;
    if (composition)
        emit activated();
    else
        emit deactivated();
}

bool CompositionProvider::isPrimary() const { return m_primary; }

void CompositionProvider::setPrimary(bool primary) { m_primary = primary; }

bool CompositionProvider::isUsing() const { return m_using; }

void CompositionProvider::setUsing(bool used) { m_using = used; }
