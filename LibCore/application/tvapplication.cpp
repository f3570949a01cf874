#include "LibCore/application/tvapplication.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QSysInfo>
#include <iostream>

#include "LibCore/error/tverrhandlerlogfile.h"
#include "LibCore/error/tverrhandlerstream.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamcmdline.h"
#include "LibCore/param/tvparamfile.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvduration.h"
#include "LibDate/core/tvlocale.h"

const char* const TVApplication::C_LastDBFile = "LastFile";
const char* const TVApplication::C_LastSession = "LastSession";
const char* const TVApplication::C_NumLastFiles = "NumLastFiles";
const char* const TVApplication::C_RecentBookmark = "RecentBookmark";

namespace {

std::string standard_location(QStandardPaths::StandardLocation location)
{
    const QStringList paths = QStandardPaths::standardLocations(location);
    return paths.isEmpty() ? std::string() : paths.first().toStdString();
}

std::vector<std::string> split_list(const std::string& text)
{
    return tv_tokenise(tv_clean_string(text, true, true, true, true), TVApplication::C_RecentSep);
}

std::string join_list(const std::vector<std::string>& files, size_t count)
{
    std::string text;
    for (size_t i = 0; i < files.size() && i < count; ++i)
        text += files[i] + TVApplication::C_RecentSep;
    return text;
}

} // namespace

TVApplication::TVApplication() : TVApplication(0, nullptr, TVAppIdentity()) {}

TVApplication::TVApplication(int argc, char** argv, const TVAppIdentity& identity)
    : m_argc(argc),
      m_argv(argv),
      m_executable(argc > 0 && argv != nullptr && argv[0] != nullptr ? argv[0] : ""),
      m_application(identity.m_application),
      m_title(identity.m_title),
      m_extension(identity.m_extension),
      m_release(identity.m_release),
      m_tag(identity.m_tag),
      m_date(identity.m_date),
      m_description(identity.m_description),
      m_company(identity.m_company),
      m_domain(identity.m_domain),
      m_copyright(identity.m_copyright),
      m_authors(identity.m_authors),
      m_logo(identity.m_logo),
      m_email(identity.m_email),
      m_web(identity.m_web),
      m_website(identity.m_website),
      m_recentWindows(1),
      m_foreground(true),
      m_background(true)
{
    install(this, false);
    QCoreApplication::setApplicationName(QString::fromStdString(m_application));
    QCoreApplication::setApplicationVersion(QString::fromStdString(m_release));
    QCoreApplication::setOrganizationName(QString::fromStdString(m_company));
    QCoreApplication::setOrganizationDomain(QString::fromStdString(m_domain));
}

TVApplication::~TVApplication()
{
    if (m_object == this) {
        TVParam::release();
        TVError::release();
        m_object = nullptr;
        m_manageDeletion = false;
    }
}

void TVApplication::dump(std::ostream& out, int indent) const
{
    TVDump dump("TVApplication", out, indent);
    dump.add_entry("application", m_application);
    dump.add_entry("title", m_title);
    dump.add_entry("extension", m_extension);
    dump.add_entry("release", m_release);
    dump.add_entry("tag", m_tag);
    dump.add_entry("date", m_date);
    dump.add_entry("executable", m_executable);
    for (size_t i = 0; i < m_recent.size(); ++i)
        dump.add_entry("recent", m_recent[i], static_cast<int>(i));
    for (size_t i = 0; i < m_session.size(); ++i)
        dump.add_entry("session", m_session[i], static_cast<int>(i));
    dump.add_entry("recentWindows", std::to_string(m_recentWindows));
}

// ---------------------------------------------------------------------------
// Start-up

int TVApplication::setup_error()
{
    // Static initialisation has made the error singleton already, so this
    // one is normally dropped and the running banner stays empty.
    TVError* error = new TVError(m_application, m_tag, m_company);
    if (TVError::install(error, true) != error)
        delete error;
    TVError* active = get_tverror();
    active->add_handler(new TVErrHandlerLogfile(get_error_log(), true, true, true, true));
    active->add_handler(new TVErrHandlerStream(std::cerr, false, true, true, true));
    active->set_stream(nullptr, TVSevUser);
    QDir().mkpath(QString::fromStdString(get_config_dir()));
    QDir().mkpath(QString::fromStdString(get_cache_dir()));
    return TVErrC_ok;
}

int TVApplication::setup_config()
{
    try {
        QDir().mkpath(QString::fromStdString(get_config_dir()));
        TVParam* param = new TVParam(0, nullptr, m_application, m_release, m_description, m_company,
                                     m_authors, m_date, get_release_tag(), m_tag);
        TVParam::replace(param, true);
        param->add_config_file(TVParamFile(TVParam::default_user_config(m_application), true));
        TV_PASS_ON(param->get_all_options());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVApplication::setup_parameters()
{
    QDir().mkpath(QString::fromStdString(get_config_dir()));
    TVParam* param = new TVParam(m_argc, m_argv, m_application, m_release, m_description, m_company, m_authors,
                                 m_date, get_release_tag(), m_tag);
    TVParam::replace(param, true);
    TVParamCmdLine cmdline;
    cmdline.add_help_options();
    cmdline.add_version_options();
    TVParamFile file(TVParam::default_user_config(m_application), true);
    int result = TVErrC_ok;
    try {
        result = parameters(*param, cmdline, file);
        if (!istvwarn(result)) {
            param->set_cmdline(cmdline);
            param->add_config_file(file);
            result = param->parse(&std::cout);
        }
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return result;
}

int TVApplication::parameters(TVParam& /*param*/, TVParamCmdLine& /*cmdline*/, TVParamFile& /*file*/)
{
    return TVErrC_ok;
}

int TVApplication::start()
{
    int result = setup_error();
    if (istvwarn(result)) {
        std::cout << tvuserinfo_get() << std::endl;
        return result;
    }
    try {
        result = setup_parameters();
        if (result == TVErrC_okShutdown)
            return TVErrC_ok;
        if (!istvwarn(result)) {
            tvlocale()->read_config();
            result = run();
        }
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return result;
}

int TVApplication::run()
{
    return TVErrC_ok;
}

// ---------------------------------------------------------------------------
// Identity and paths

void TVApplication::add_app_store(const std::string& apple, const std::string& microsoft, const std::string& google)
{
    m_appleStore = apple;
    m_msStore = microsoft;
    m_googleStore = google;
}

std::string TVApplication::get_app_store() const
{
#if defined(Q_OS_MACOS) || defined(Q_OS_IOS)
    return m_appleStore;
#elif defined(Q_OS_WIN)
    return m_msStore;
#elif defined(Q_OS_ANDROID)
    return m_googleStore;
#else
    return std::string();
#endif
}

std::string TVApplication::get_release_tag() const
{
    return m_application + "-" + m_release;
}

std::string TVApplication::get_major_tag() const
{
    const size_t end = m_release.find_first_of(",-.");
    return m_application + "-" + m_release.substr(0, end);
}

int TVApplication::release_to_int(const std::string& release)
{
    const std::vector<std::string> parts = tv_tokenise(release, '.');
    if (parts.empty())
        return 0;
    const int major = 1000 * tv_string_to_int(parts[0], 0);
    return parts.size() == 1 ? major : major + tv_string_to_int(parts[1], 0);
}

namespace {
std::string& hostname_override()
{
    static std::string host;
    return host;
}
} // namespace

std::string TVApplication::get_hostname()
{
    const std::string& host = hostname_override();
    return host.empty() ? QSysInfo::machineHostName().toStdString() : host;
}

void TVApplication::set_hostname_override(const std::string& host)
{
    hostname_override() = host;
}

std::string TVApplication::get_executable() const
{
    return m_executable;
}

std::string TVApplication::get_executable_dir() const
{
    return QFileInfo(QString::fromStdString(m_executable)).absolutePath().toStdString();
}

std::string TVApplication::get_resources_dir() const
{
    return QDir::cleanPath(QString::fromStdString(get_executable_dir() + "/../Resources")).toStdString();
}

std::string TVApplication::get_doc_dir() const
{
    return get_resources_dir() + "/Doc/";
}

std::string TVApplication::get_scratch_dir() const
{
    return get_data_dir() + "/scratch";
}

std::string TVApplication::get_data_dir() const
{
    return standard_location(QStandardPaths::AppDataLocation);
}

std::string TVApplication::get_cache_dir() const
{
    return standard_location(QStandardPaths::CacheLocation);
}

std::string TVApplication::get_config_dir() const
{
    return standard_location(QStandardPaths::ConfigLocation);
}

std::string TVApplication::get_documents_dir() const
{
    return standard_location(QStandardPaths::DocumentsLocation);
}

std::string TVApplication::get_error_log() const
{
    return get_cache_dir() + "/" + m_application + "_error.log";
}

std::string TVApplication::get_performance_log() const
{
    return get_cache_dir() + "/" + m_application + "_performance.log";
}

// ---------------------------------------------------------------------------
// Recent files

std::string TVApplication::recent_tag(const std::string& file)
{
    const QByteArray hash =
        QCryptographicHash::hash(QByteArray::fromStdString(file), QCryptographicHash::Md5).toHex();
    return std::string(C_RecentBookmark) + hash.toStdString();
}

int TVApplication::add_recent(const std::string& file, int position)
{
    if (m_recent.empty() || m_recent.front() != file) {
        const int count = static_cast<int>(m_recent.size());
        if (position < 0 || position > count)
            m_recent.insert(m_recent.begin(), file);
        else
            m_recent.insert(m_recent.begin() + position, file);
        const int result = save_recent();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
    }
    return store_security_bookmark(recent_tag(file), file);
}

int TVApplication::save_recent()
{
    for (size_t i = 0; i < m_recent.size(); ++i)
        for (size_t j = m_recent.size(); j-- > i + 1;)
            if (m_recent[j] == m_recent[i])
                m_recent.erase(m_recent.begin() + static_cast<long>(j));
    return set_value(C_LastDBFile, join_list(m_recent, C_NumberRecent));
}

int TVApplication::set_value(const std::string& name, const std::string& value)
{
    if (!TVParam::has_object())
        return TVErrC_ok;
    const int result = tvparam()->set_system_value(name, value);
    if (istvwarn(result))
        return tv_trail_return(result, TVLOCATION);
    return result;
}

void TVApplication::load_recent()
{
    if (!TVParam::has_object())
        return;
    m_session = split_list(tvparam()->get_system_value(C_LastSession));
    m_recent = split_list(tvparam()->get_system_value(C_LastDBFile));
    m_recentWindows = tv_string_to_int(tvparam()->get_system_value(C_NumLastFiles), 1);
    for (const std::string& file : m_session.empty() ? m_recent : m_session)
        access_security_bookmark(recent_tag(file));
}

int TVApplication::record_open_windows(int count, bool keep)
{
    if (keep) {
        const std::string text = join_list(m_recent, static_cast<size_t>(count < 0 ? 0 : count));
        const int result = set_value(C_LastSession, text);
        if (istvwarn(result))
            return result;
        m_session = split_list(text);
    }
    return set_value(C_NumLastFiles, std::to_string(count));
}

int TVApplication::clear_session()
{
    return set_value(C_LastSession, "");
}

std::string TVApplication::get_first_file() const
{
    if (!m_session.empty())
        return m_session.front();
    if (!m_recent.empty())
        return m_recent.front();
    return std::string();
}

// ---------------------------------------------------------------------------
// Status stacks

void TVApplication::push_status(const std::string& text, double percentage, bool foreground, int delayMicroseconds)
{
    TVApplication::pop_status(text, foreground);
    auto* entry = new TVAppStatusEntry;
    entry->m_status = text;
    entry->m_percentage = percentage;
    entry->m_showFrom = TVDateUtils::unow() + TVDuration(0, 0, delayMicroseconds);
    stack(foreground).add(entry);
}

void TVApplication::pop_status(const std::string& text, bool foreground)
{
    TVPtrArray<TVAppStatusEntry>& entries = stack(foreground);
    for (int i = entries.size(); i-- > 0;)
        if (entries[i]->m_status == text)
            (void)entries.erase(i);
}

std::string TVApplication::foreground_status() const
{
    if (m_foreground.empty())
        return std::string();
    const TVDate now = TVDateUtils::unow();
    TVDate earliest = now + TVDuration(1);
    for (const TVAppStatusEntry* entry : m_foreground)
        if (entry->m_showFrom < earliest)
            earliest = entry->m_showFrom;
    if (earliest > now)
        return std::string();
    return m_foreground.last()->m_status;
}

double TVApplication::status_percentage(const std::string& text, bool foreground) const
{
    for (const TVAppStatusEntry* entry : stack(foreground))
        if (entry->m_status == text)
            return entry->m_percentage;
    return 0.0;
}

size_t TVApplication::status_count(bool foreground) const
{
    return static_cast<size_t>(stack(foreground).size());
}

TVApplication* tvapplication()
{
    return TVApplication::instance();
}
