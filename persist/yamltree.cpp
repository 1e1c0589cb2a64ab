// SPDX-License-Identifier: MIT
#include "persist/yamltree.h"

#include <sstream>
#include <vector>

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

namespace
{
using Value = std::shared_ptr<YamlValue>;

/// Makes values of the parser's events. The library's own tree is not used: it follows aliases without a limit.
class TreeBuilder : public YAML::EventHandler
{
public:
    Value root() const { return m_root; }

    void OnDocumentStart(const YAML::Mark &) override { }
    void OnDocumentEnd() override { }
    void OnNull(const YAML::Mark &mark, YAML::anchor_t anchor) override { addText(mark, anchor, std::string()); }
    void OnScalar(const YAML::Mark &mark, const std::string &, YAML::anchor_t anchor, const std::string &text) override
    {
        addText(mark, anchor, text);
    }
    void OnAlias(const YAML::Mark &mark, YAML::anchor_t anchor) override
    {
        const Value target = anchor < m_anchored.size() ? m_anchored[anchor] : Value();
        if (!target)
            throw YAML::ParserException(mark, "an alias to what it is in");
        add(mark, target);
    }
    void OnSequenceStart(const YAML::Mark &mark, const std::string &, YAML::anchor_t anchor, YAML::EmitterStyle::value) override
    {
        open(mark, anchor, YamlValue::Kind::List);
    }
    void OnMapStart(const YAML::Mark &mark, const std::string &, YAML::anchor_t anchor, YAML::EmitterStyle::value) override
    {
        open(mark, anchor, YamlValue::Kind::Map);
    }
    void OnSequenceEnd() override { close(); }
    void OnMapEnd() override { close(); }

private:
    struct Open
    {
        Value value;
        YAML::anchor_t anchor;
        YAML::Mark mark;
        bool hasKey = false;
        QString key;
    };

    static Value valueAt(const YAML::Mark &mark, YamlValue::Kind kind)
    {
        auto value = std::make_shared<YamlValue>();
        value->kind = kind;
        value->line = mark.line + 1;
        return value;
    }

    void addText(const YAML::Mark &mark, YAML::anchor_t anchor, const std::string &text)
    {
        const Value value = valueAt(mark, YamlValue::Kind::Text);
        value->text = QString::fromStdString(text);
        remember(anchor, value);
        add(mark, value);
    }

    void open(const YAML::Mark &mark, YAML::anchor_t anchor, YamlValue::Kind kind)
    {
        if (m_open.size() >= std::size_t(maximumYamlDepth))
            throw YAML::ParserException(mark, "it is nested too deeply");
        m_open.push_back({valueAt(mark, kind), anchor, mark, false, QString()});
    }

    void close()
    {
        const Open done = m_open.back();
        m_open.pop_back();
        remember(done.anchor, done.value);
        add(done.mark, done.value);
    }

    /// An anchor counts from its value's end on, so that nothing can hold itself.
    void remember(YAML::anchor_t anchor, const Value &value)
    {
        if (anchor == YAML::NullAnchor)
            return;
        if (anchor >= m_anchored.size())
            m_anchored.resize(anchor + 1);
        m_anchored[anchor] = value;
    }

    void add(const YAML::Mark &mark, const Value &value)
    {
        if (m_open.empty()) {
            m_root = value;
            return;
        }
        Open &around = m_open.back();
        if (around.value->kind == YamlValue::Kind::List) {
            around.value->items.append(value);
        } else if (!around.hasKey) {
            if (value->kind != YamlValue::Kind::Text)
                throw YAML::ParserException(mark, "a key that is no text");
            around.key = value->text;
            around.hasKey = true;
            return;
        } else {
            around.value->members.insert(around.key, value);
            around.hasKey = false;
        }
        around.value->values += value->values;
        around.value->height = qMax(around.value->height, value->height + 1);
        if (around.value->values > maximumYamlValues)
            throw YAML::ParserException(mark, "it has too many values");
        if (int(m_open.size()) + value->height > maximumYamlDepth)
            throw YAML::ParserException(mark, "it is nested too deeply");
    }

    Value m_root;
    std::vector<Open> m_open;
    std::vector<Value> m_anchored;
};
}

std::shared_ptr<const YamlValue> readYaml(const QByteArray &text, QString *error)
{
    std::istringstream stream(text.toStdString());
    TreeBuilder builder;
    try {
        YAML::Parser parser(stream);
        parser.HandleNextDocument(builder);
    } catch (const YAML::Exception &exception) {
        *error = QStringLiteral("line %1: %2").arg(exception.mark.line + 1).arg(QString::fromStdString(exception.msg));
        return nullptr;
    }
    if (!builder.root())
        *error = QStringLiteral("line 1: it is empty");
    return builder.root();
}
