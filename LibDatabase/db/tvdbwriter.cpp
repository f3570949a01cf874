#include "LibDatabase/db/tvdbwriter.h"

#include "LibCore/application/tvapplication.h"
#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvserialisationentry.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

TVDBWriter::TVDBWriter(const TVDatabase& db) : m_db(db), d(db.d.get())
{
}

int TVDBWriter::write(std::ostream& out, long since, bool first, const std::string& transaction,
                      int version) const
{
    try {
        if (since == 0 || first) {
            if (version != -1 && version != d->m_databaseFileVersion)
                return tverror(TVDatabase::TVErrC_InvalidDatabaseVersion, TVLOCATION,
                               "You must use a since value of 0 if you are going to change the "
                               "database file version.");
            out << TVDBFormat::C_Identifier << '\n';
            TV_PASS_ON(TVSerialisationEntry::write_tagged_field(TVDBFormat::C_Version, out, "%d",
                                                                d->m_databaseFileVersion));
        }
        const int afv = d->m_appFileVersion;
        if (!transaction.empty() && since > 0) {
            d->m_appRelease = tvapplication()->get_release();
            std::string tag;
            d->m_index.add_transaction(transaction, tag, afv);
            TV_PASS_ON(TVSerialisationEntry::write_tagged_field(TVDBFormat::C_Transaction, out, "%s",
                                                                tag.c_str()));
        }
        d->m_recordsWritten = 0;
        if (since == 0 || m_db.has_changed_since(since)) {
            TV_PASS_ON(TVSerialisationEntry::write_tagged_class(TVDBFormat::C_ObjectStart, m_db, out, afv));
            ++d->m_recordsWritten;
        }
        if (since > 0) {
            for (const TVDBObject* object : m_db.changed_objects(since)) {
                TV_PASS_ON(
                    TVSerialisationEntry::write_tagged_class(TVDBFormat::C_ObjectStart, *object, out, afv));
                ++d->m_recordsWritten;
            }
            return TVErrC_ok;
        }
        const TVDate cutoff = TVDateUtils::now() - TVDuration(TVDatabase::C_TombstoneDays, 0, 0);
        for (const TVDBObject* object : d->m_objects) {
            if (since == 0 && object->is_deleted() && object->get_modify_time() < cutoff)
                continue;
            TV_PASS_ON(TVSerialisationEntry::write_tagged_class(TVDBFormat::C_ObjectStart, *object, out, afv));
            ++d->m_recordsWritten;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
