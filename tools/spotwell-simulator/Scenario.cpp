// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Scenario.h"

#include "tools/spotwell-simulator/StatementParser.h"
#include "tools/spotwell-simulator/WebAnswerParser.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <utility>

namespace spotwell::simulator
{
namespace
{

constexpr qsizetype mostBytes = 1 << 20;
constexpr int mostStatements = 10'000;
constexpr std::size_t deepestNesting = 8;

bool isName(const Word& word)
{
    const auto isLetter = [](QChar character) { return character >= u'a' && character <= u'z'; };
    return word.kind == Word::Kind::bare &&
           std::all_of(word.text.begin(), word.text.end(), [&](QChar character) {
               return isLetter(character) || character == u'-' || character == u'_';
           });
}

bool endsConnection(const Statement& statement)
{
    return std::holds_alternative<Close>(statement.what) || std::holds_alternative<Reset>(statement.what);
}

bool sends(const Statement& statement)
{
    return std::holds_alternative<Send>(statement.what) || std::holds_alternative<Spots>(statement.what) ||
           std::holds_alternative<Flood>(statement.what) || std::holds_alternative<Cut>(statement.what) ||
           std::holds_alternative<HalfClose>(statement.what) ||
           std::holds_alternative<Repeat>(statement.what);
}

/// What the first, second, ... one of something gets.
template <typename Block>
const Block& blockOf(const std::vector<Block>& blocks, const std::optional<Block>& otherwise, qint64 number)
{
    const auto index = static_cast<std::size_t>(number - 1);
    if (index < blocks.size())
        return blocks[index];
    return otherwise ? *otherwise : blocks.back();
}

class Parser
{
public:
    Parser(const QString& file, const Variables& given) : given_(given), variables_(given)
    {
        scenario_.file = file;
        scenario_.name = QFileInfo{file}.completeBaseName();
    }

    std::variant<Scenario, ScenarioError> run(const QByteArray& text)
    {
        if (text.size() > mostBytes)
            return ScenarioError{scenario_.file, 0, QStringLiteral("more than %1 bytes").arg(mostBytes)};
        qsizetype start = 0;
        while (start < text.size() && error_.isNull()) {
            const qsizetype found = text.indexOf('\n', start);
            const qsizetype end = found < 0 ? text.size() : found;
            ++line_;
            readLine(text.mid(start, end - start));
            start = end + 1;
        }
        finish();
        if (!error_.isNull())
            return ScenarioError{scenario_.file, line_, error_};
        return std::move(scenario_);
    }

private:
    enum class Place { outside, block, otherwise, loose };

    struct Block {
        int line;
        Session statements;
        std::optional<int> times;
        WebAnswer answer;
    };

    void fail(const QString& message) { error_ = message; }

    void failAt(int line, const QString& message)
    {
        line_ = line;
        fail(message);
    }

    void readLine(QByteArray bytes)
    {
        if (bytes.endsWith('\r'))
            bytes.chop(1);
        QStringDecoder decoder{QStringDecoder::Utf8};
        const QString text = decoder(bytes);
        if (decoder.hasError())
            return fail(QStringLiteral("the line is not UTF-8"));
        const Words split = splitWords(text, variables_);
        if (!split.error.isNull())
            return fail(split.error);
        if (!split.words.empty())
            readWords(split.words);
    }

    void readWords(const std::vector<Word>& words)
    {
        const QString keyword = words[0].kind == Word::Kind::bare ? words[0].text : QString{};
        if (keyword == u"set")
            return readSet(words);
        if (keyword == u"service")
            return readService(words);
        if (keyword != blockName() && keyword != u"otherwise" && keyword != u"end")
            return readStatement(words);
        if (words.size() > 1)
            return fail(QStringLiteral("nothing more expected after \"%1\"").arg(keyword));
        if (keyword == u"end")
            endBlock();
        else
            beginBlock(keyword == blockName() ? Place::block : Place::otherwise);
    }

    /// What the scenario consists of.
    [[nodiscard]] QString blockName() const
    {
        return scenario_.isService() ? QStringLiteral("answer") : QStringLiteral("session");
    }

    [[nodiscard]] bool atBeginning() const
    {
        return place_ == Place::outside && scenario_.sessions.empty() && scenario_.answers.empty();
    }

    [[nodiscard]] bool hasOtherwise() const { return scenario_.otherwise || scenario_.otherAnswer; }

    void readSet(const std::vector<Word>& words)
    {
        if (!atBeginning())
            return fail(QStringLiteral("\"set\" has to stand before everything else"));
        if (words.size() != 3 || !isName(words[1]))
            return fail(QStringLiteral("\"set\" needs a name of small letters and a value"));
        const QString& name = words[1].text;
        if (scenario_.variables.contains(name))
            return fail(QStringLiteral("the variable \"%1\" is set already").arg(name));
        scenario_.variables.append(name);
        if (!given_.contains(name))
            variables_.insert(name, words[2].text);
    }

    void readService(const std::vector<Word>& words)
    {
        if (!atBeginning())
            return fail(QStringLiteral("\"service\" has to stand before everything else"));
        if (scenario_.isService())
            return fail(QStringLiteral("\"service\" was said already"));
        if (words.size() == 2 && words[1].text == u"http")
            scenario_.kind = Scenario::Kind::http;
        else if (words.size() == 2 && words[1].text == u"https")
            scenario_.kind = Scenario::Kind::https;
        else
            fail(QStringLiteral("\"service\" needs \"http\" or \"https\""));
    }

    void beginBlock(Place place)
    {
        if (place_ == Place::loose)
            return fail(QStringLiteral("statements stand in front of the first %1").arg(blockName()));
        if (place_ != Place::outside)
            return fail(QStringLiteral("%1s cannot be nested").arg(blockName()));
        if (hasOtherwise())
            return fail(QStringLiteral("nothing can follow \"otherwise\""));
        if (place == Place::otherwise && atBeginning()) {
            return fail(scenario_.isService() ? QStringLiteral("\"otherwise\" needs an answer before it")
                                              : QStringLiteral("\"otherwise\" needs a session before it"));
        }
        place_ = place;
        open(std::nullopt);
    }

    void open(std::optional<int> times)
    {
        blocks_.push_back({line_, {}, times, {}});
        blocks_.back().answer.line = line_;
    }

    void readStatement(const std::vector<Word>& words)
    {
        if (scenario_.isService())
            return readAnswerStatement(words);
        ParsedStatement parsed = parseStatement(words, line_);
        if (!parsed.error.isNull())
            return fail(parsed.error);
        enterBlock();
        if (!error_.isNull())
            return;
        checkOrder(parsed.statement);
        if (!error_.isNull())
            return;
        if (const auto* repeat = std::get_if<Repeat>(&parsed.statement.what)) {
            if (blocks_.size() > deepestNesting)
                return fail(QStringLiteral("\"repeat\" is nested more than %1 deep").arg(deepestNesting));
            open(repeat->times);
        } else {
            blocks_.back().statements.push_back(std::move(parsed.statement));
        }
    }

    void readAnswerStatement(const std::vector<Word>& words)
    {
        enterBlock();
        if (error_.isNull())
            error_ = addToAnswer(blocks_.back().answer, words, line_, QFileInfo{scenario_.file}.path());
    }

    /// Counts a statement and makes sure that it stands in a block.
    void enterBlock()
    {
        if (place_ == Place::outside) {
            if (!atBeginning())
                return fail(QStringLiteral("the statement stands outside of the %1s").arg(blockName()));
            place_ = Place::loose;
            open(std::nullopt);
        }
        if (++statements_ > mostStatements)
            fail(QStringLiteral("more than %1 statements").arg(mostStatements));
    }

    void checkOrder(const Statement& next)
    {
        const Session& before = blocks_.back().statements;
        if (!before.empty() && endsConnection(before.back()))
            return fail(QStringLiteral("nothing can follow \"close\" or \"reset\""));
        if (blocks_.size() > 1 && (endsConnection(next) || std::holds_alternative<HalfClose>(next.what)))
            return fail(QStringLiteral("a connection cannot be ended inside \"repeat\""));
        const bool halfClosed = std::any_of(before.begin(), before.end(), [](const Statement& statement) {
            return std::holds_alternative<HalfClose>(statement.what);
        });
        if (halfClosed && sends(next))
            return fail(QStringLiteral("nothing can be sent after \"half-close\""));
    }

    void endBlock()
    {
        if (blocks_.empty() || (blocks_.size() == 1 && place_ == Place::loose))
            return fail(QStringLiteral("\"end\" without a beginning"));
        Block block = std::move(blocks_.back());
        blocks_.pop_back();
        if (!blocks_.empty()) {
            if (block.statements.empty())
                return failAt(block.line, QStringLiteral("there is nothing to repeat"));
            blocks_.back().statements.push_back(
                {block.line, Repeat{block.times, std::move(block.statements)}});
            return;
        }
        close(std::move(block));
    }

    void close(Block block)
    {
        if (scenario_.isService()) {
            if (const QString fault = faultOf(block.answer); !fault.isNull())
                return failAt(block.line, fault);
            if (place_ == Place::otherwise)
                scenario_.otherAnswer = std::move(block.answer);
            else
                scenario_.answers.push_back(std::move(block.answer));
        } else if (place_ == Place::otherwise) {
            scenario_.otherwise = std::move(block.statements);
        } else {
            scenario_.sessions.push_back(std::move(block.statements));
        }
        place_ = Place::outside;
    }

    void finish()
    {
        if (!error_.isNull())
            return;
        const std::size_t loose = place_ == Place::loose ? 1 : 0;
        if (blocks_.size() > loose)
            return failAt(blocks_.back().line, QStringLiteral("\"end\" is missing"));
        if (place_ == Place::loose)
            close(std::move(blocks_.back()));
        else if (atBeginning())
            failAt(0, QStringLiteral("the scenario says nothing"));
    }

    Scenario scenario_;
    const Variables& given_;
    Variables variables_;
    Place place_ = Place::outside;
    std::vector<Block> blocks_;
    int statements_ = 0;
    int line_ = 0;
    QString error_;
};

} // namespace

const Session& Scenario::session(qint64 number) const
{
    return blockOf(sessions, otherwise, number);
}

const WebAnswer& Scenario::answer(qint64 number) const
{
    return blockOf(answers, otherAnswer, number);
}

QString ScenarioError::text() const
{
    return line == 0 ? QStringLiteral("%1: %2").arg(file, message)
                     : QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(message);
}

std::variant<Scenario, ScenarioError> parseScenario(const QByteArray& text, const QString& file,
                                                    const Variables& given)
{
    return Parser{file, given}.run(text);
}

std::variant<Scenario, ScenarioError> readScenario(const QString& path, const Variables& given)
{
    QFile file{path};
    if (!file.open(QIODevice::ReadOnly))
        return ScenarioError{path, 0, file.errorString()};
    return parseScenario(file.read(mostBytes + 1), path, given);
}

} // namespace spotwell::simulator
