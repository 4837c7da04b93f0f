#pragma once

#include <QProperty>

/// One published field in one line: a read-only, bindable property `name` with its change signal. The class
/// names itself by a private alias `Self`; inside it the field is `m_name`, and a plain assignment publishes
/// the value.
#define QUORVEL_PUBLISHED(Type, name, Name, initial)                                                         \
    Q_PROPERTY(Type name READ name NOTIFY name##Changed BINDABLE bindable##Name)                             \
public:                                                                                                      \
    Type name() const                                                                                        \
    {                                                                                                        \
        return m_##name;                                                                                     \
    }                                                                                                        \
    QBindable<Type> bindable##Name() const                                                                   \
    {                                                                                                        \
        return &m_##name;                                                                                    \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(Self, Type, m_##name, initial, &Self::name##Changed)

/// A published text that an input field of the interface edits: it can also be written from there.
#define QUORVEL_DRAFT(name, Name)                                                                            \
    Q_PROPERTY(QString name READ name WRITE set##Name NOTIFY name##Changed BINDABLE bindable##Name)          \
public:                                                                                                      \
    QString name() const                                                                                     \
    {                                                                                                        \
        return m_##name;                                                                                     \
    }                                                                                                        \
    void set##Name(const QString &text)                                                                      \
    {                                                                                                        \
        m_##name = text;                                                                                     \
    }                                                                                                        \
    QBindable<QString> bindable##Name()                                                                      \
    {                                                                                                        \
        return &m_##name;                                                                                    \
    }                                                                                                        \
    Q_SIGNAL void name##Changed();                                                                           \
                                                                                                             \
private:                                                                                                     \
    Q_OBJECT_BINDABLE_PROPERTY(Self, QString, m_##name, &Self::name##Changed)
