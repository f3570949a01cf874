// tvmanpage: writes a program's manual page from what the program itself
// prints, at build time, so that the page can't fall behind its options.
//
//   tvmanpage --man      PROGRAM NAME OUTPUT [--see-also PAGE]...
//   tvmanpage --commands PROGRAM NAME OUTPUT --summary TEXT [--see-also PAGE]...
//
// --man reads "PROGRAM --man", a page of capitalised sections (NAME,
// SYNOPSIS, DESCRIPTION, FILES...), whose synopsis is a list of usage
// lines at the margin, each followed by its indented explanation.
// --commands reads "PROGRAM --help" (a "Usage:" line, a "Commands:" list
// of "  name  what it does", then notes) and "PROGRAM CMD --help" for each
// command listed, and gives every command a subsection of its own.
// Both read "PROGRAM --version" for the page's header. NAME is the command
// as installed; the program's own name for itself is replaced by it. The
// builder's home in the program's output becomes "~". Exits 1, with the
// reason on stderr, if a program fails or prints nothing usable, so that
// the build stops instead of installing an empty page.

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <cstdio>
#include <stdexcept>

namespace {

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

QString run(const QString& program, const QStringList& args)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, args);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        throw Failure(QString("%1 %2 failed").arg(program, args.join(' ')).toStdString());
    QString out = QString::fromUtf8(process.readAllStandardOutput());
    const QString home = qEnvironmentVariable("HOME");
    if (!home.isEmpty())
        out.replace(home, "~");
    return out;
}

// One line of text for roff: backslashes and hyphens escaped, a leading
// dot or quote kept from being read as a request.
QString roff(const QString& text)
{
    QString out = text;
    out.replace('\\', "\\e");
    out.replace('-', "\\-");
    if (out.startsWith('.') || out.startsWith('\''))
        out.prepend("\\&");
    return out;
}

QString quoted(const QString& text)
{
    QString out = roff(text);
    out.replace('"', "\\(dq");
    return '"' + out + '"';
}

// Help text as roff: blank lines part paragraphs; "  -x, --long ARG  what"
// is an option item, and the deeper lines under it go on its text; any
// other line is running text that roff fills.
QString body(const QStringList& lines)
{
    static const QRegularExpression item("^ {1,4}(-\\S.*?)(?: {2,}(.*))?$");
    static const QRegularExpression deeper("^ {5,}\\S");
    // An option long enough to leave one space before its text is split
    // at the column where the other items' texts start.
    int column = 0;
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = item.match(line);
        if (match.hasMatch() && match.capturedStart(2) > column)
            column = match.capturedStart(2);
    }
    QString out;
    bool inItem = false;
    bool pendingParagraph = false;
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty()) {
            pendingParagraph = !out.isEmpty();
            inItem = false;
            continue;
        }
        const QRegularExpressionMatch match = item.match(line);
        if (match.hasMatch()) {
            QString option = match.captured(1).trimmed();
            QString text = match.captured(2).trimmed();
            if (text.isEmpty() && column > 0 && line.size() > column && line[column - 1] == ' ') {
                option = line.left(column).trimmed();
                text = line.mid(column).trimmed();
            }
            out += ".TP\n.B " + roff(option) + "\n";
            if (!text.isEmpty())
                out += roff(text) + "\n";
            inItem = true;
            pendingParagraph = false;
            continue;
        }
        if (inItem && deeper.match(line).hasMatch()) {
            out += roff(line.trimmed()) + "\n";
            continue;
        }
        if (inItem || pendingParagraph)
            out += ".PP\n";
        inItem = false;
        pendingParagraph = false;
        out += roff(line.trimmed()) + "\n";
    }
    return out;
}

QString version(const QString& program)
{
    const QString first = run(program, {"--version"}).section('\n', 0, 0).trimmed();
    const QString number = first.section(' ', -1);
    if (number.isEmpty())
        throw Failure("no version from " + program.toStdString());
    return number;
}

QString header(const QString& name, const QString& release)
{
    return ".TH " + quoted(name.toUpper()) + " 1 \"\" " + quoted(name + " " + release) +
           " \"User Commands\"\n";
}

QString see_also(const QStringList& pages)
{
    if (pages.isEmpty())
        return {};
    QStringList refs;
    for (const QString& page : pages)
        refs << ".BR " + roff(page.section('.', 0, -2)) + " (" + page.section('.', -1) + ")";
    return ".SH \"SEE ALSO\"\n" + refs.join(",\n") + "\n";
}

// "PROGRAM --man": sections at the margin in capitals.
QString from_man(const QString& program, const QString& name, const QStringList& seeAlso)
{
    const QStringList lines = run(program, {"--man"}).split('\n');
    static const QRegularExpression heading("^[A-Z][A-Z ]*$");
    QList<QPair<QString, QStringList>> sections;
    for (const QString& line : lines) {
        if (heading.match(line).hasMatch())
            sections.append({line, {}});
        else if (!sections.isEmpty())
            sections.last().second << line;
    }
    if (sections.isEmpty() || sections.first().first != "NAME")
        throw Failure("no NAME section from " + program.toStdString() + " --man");
    // The program calls itself by its application name ("TarvelloMaths").
    const QString self = sections.first().second.join(' ').trimmed().section(' ', 0, 0);

    QString page = header(name, version(program));
    for (const auto& [title, text] : sections) {
        page += ".SH " + quoted(title) + "\n";
        if (title == "NAME") {
            page += roff(name + " - " + text.join(' ').trimmed().section(" - ", 1)) + "\n";
        } else if (title == "SYNOPSIS") {
            // Each usage line leads an item; its explanation lines stay lines.
            for (const QString& line : text) {
                if (line.trimmed().isEmpty())
                    continue;
                if (!line.startsWith(' ')) {
                    QString usage = line;
                    if (usage.startsWith(self + ' '))
                        usage = name + usage.mid(self.size());
                    page += ".TP\n.B " + roff(usage) + "\n";
                } else {
                    page += roff(line.trimmed()) + "\n.br\n";
                }
            }
        } else {
            page += body(text);
        }
    }
    return page + see_also(seeAlso);
}

// "PROGRAM --help" with its command list, and each command's own help.
QString from_commands(const QString& program, const QString& name, const QString& summary,
                      const QStringList& seeAlso)
{
    const QStringList lines = run(program, {"--help"}).split('\n');
    static const QRegularExpression command("^ {2}(\\w[\\w-]*) {2,}(.*)$");
    QString usage;
    QStringList commands;
    QString commandList;
    QStringList notes;
    bool inCommands = false;
    for (const QString& line : lines) {
        if (line.startsWith("Usage: ")) {
            usage = line.mid(7).trimmed();
        } else if (line == "Commands:") {
            inCommands = true;
        } else if (inCommands && command.match(line).hasMatch()) {
            const QRegularExpressionMatch match = command.match(line);
            commands << match.captured(1);
            commandList += ".TP\n.B " + roff(match.captured(1)) + "\n" + roff(match.captured(2)) + "\n";
        } else {
            inCommands = false;
            notes << line;
        }
    }
    if (usage.isEmpty() || commands.isEmpty())
        throw Failure("no usage or no commands from " + program.toStdString() + " --help");

    QString page = header(name, version(program));
    page += ".SH NAME\n" + roff(name + " - " + summary) + "\n";
    page += ".SH SYNOPSIS\n.B " + roff(usage) + "\n";
    page += ".SH DESCRIPTION\n" + body(notes);
    page += ".SH COMMANDS\n" + commandList;
    for (const QString& cmd : commands) {
        QStringList help = run(program, {cmd, "--help"}).split('\n');
        QString title = name + " " + cmd;
        if (!help.isEmpty() && help.first().startsWith("Usage: ")) {
            title = help.first().mid(7).trimmed();
            help.removeFirst();
        }
        page += ".SS " + quoted(title) + "\n" + body(help);
    }
    return page + see_also(seeAlso);
}

int usage()
{
    std::fprintf(stderr,
                 "usage: tvmanpage --man PROGRAM NAME OUTPUT [--see-also PAGE]...\n"
                 "       tvmanpage --commands PROGRAM NAME OUTPUT --summary TEXT [--see-also PAGE]...\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    if (args.size() < 4 || (args[0] != "--man" && args[0] != "--commands"))
        return usage();
    const bool commands = args[0] == "--commands";
    const QString program = args[1];
    const QString name = args[2];
    const QString output = args[3];
    QString summary;
    QStringList seeAlso;
    for (int i = 4; i < args.size(); i += 2) {
        if (i + 1 >= args.size())
            return usage();
        if (args[i] == "--summary")
            summary = args[i + 1];
        else if (args[i] == "--see-also")
            seeAlso << args[i + 1];
        else
            return usage();
    }
    if (commands && summary.isEmpty())
        return usage();

    try {
        const QString page = commands ? from_commands(program, name, summary, seeAlso)
                                      : from_man(program, name, seeAlso);
        QFile file(output);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(page.toUtf8()) < 0 ||
            !file.flush())
            throw Failure("cannot write " + output.toStdString());
    } catch (const Failure& failure) {
        std::fprintf(stderr, "tvmanpage: %s\n", failure.what());
        QFile::remove(output);
        return 1;
    }
    return 0;
}
