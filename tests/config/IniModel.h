#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <algorithm>

/// A simple second implementation of loading and saving a settings file. The tests use it as a model.
struct IniModel
{
    bool valid = true;
    QMap<QByteArray, QMap<QByteArray, QByteArray>> sections;
    QMap<QByteArray, QByteArray> inlineComments;
    QMap<QByteArray, QByteArray> commentLines;

    explicit IniModel(const QByteArray& text)
    {
        QByteArray section("default");
        QList<QByteArray> pending;
        QList<QByteArray> lines = text.split('\n');
        if (lines.last().isEmpty()) {
            lines.removeLast();
        }
        for (const QByteArray& line : lines) {
            const int comment = line.indexOf(';');
            if (line.startsWith(';')) {
                pending.append(line + '\n');
            } else if (line.startsWith('[')) {
                const int end = line.indexOf(']');
                section = line.mid(1, end < 0 ? -1 : end - 1);
                if (comment >= 0) {
                    inlineComments[section] = line.mid(comment);
                }
                for (int i = 0; i < pending.size(); ++i) {
                    commentLines[section + QByteArray::number(i)] = pending.at(i);
                }
                pending.clear();
            } else {
                const int equals = line.indexOf('=');
                const QByteArray key = equals < 0 ? line : line.left(equals);
                const int start = equals + 1;
                if (section.isEmpty() || key.isEmpty()) {
                    valid = false;
                    return;
                }
                sections[section][key] =
                    comment < 0 ? line.mid(start) : line.mid(start, std::max(0, comment - start));
                if (comment >= 0) {
                    inlineComments[section + '/' + key] = line.mid(comment);
                }
            }
        }
    }

    /// The blocks of a file. A block contains the comment lines and the line of a section, then its key
    /// lines. Blocks and key lines are sorted, because their order is unspecified.
    using Blocks = QList<QList<QByteArray>>;

    Blocks Saved() const
    {
        Blocks blocks;
        for (auto section = sections.begin(); section != sections.end(); ++section) {
            const QByteArray name = section.key();
            QByteArray head;
            for (int i = 0; !commentLines.value(name + QByteArray::number(i)).isEmpty(); ++i) {
                head += commentLines.value(name + QByteArray::number(i));
            }
            QList<QByteArray> keys;
            for (auto key = section->begin(); key != section->end(); ++key) {
                if (commentLines.value(name + '/' + key.key() + '0').isEmpty()) {
                    keys.append(key.key() + '=' + key.value() + inlineComments.value(name + '/' + key.key()));
                }
            }
            std::sort(keys.begin(), keys.end());
            keys.prepend(head + '[' + name + ']' + inlineComments.value(name));
            blocks.append(keys);
        }
        std::sort(blocks.begin(), blocks.end());
        return blocks;
    }

    /// Returns the blocks of a saved text, in which every line ends with a line feed.
    static Blocks Split(const QByteArray& text)
    {
        Blocks blocks;
        QByteArray head;
        QList<QByteArray> lines = text.split('\n');
        lines.removeLast();
        for (const QByteArray& line : lines) {
            if (line.startsWith(';')) {
                head += line + '\n';
            } else if (line.startsWith('[')) {
                blocks.append(QList<QByteArray>{head + line});
                head.clear();
            } else if (!head.isEmpty() || blocks.isEmpty()) {
                return {};
            } else {
                blocks.last().append(line);
            }
        }
        for (QList<QByteArray>& block : blocks) {
            std::sort(block.begin() + 1, block.end());
        }
        std::sort(blocks.begin(), blocks.end());
        return blocks;
    }
};
