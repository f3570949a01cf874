#include "LibObject/object/tvsrl.h"

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <ostream>

void TVSrl::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVSrl\n"
        << pad << "    handle_multiple = " << handle_multiple() << '\n'
        << pad << "    nentries = " << get_nentries() << '\n';
}

int TVSrl::start_read()
{
    return TVErrC_ok;
}

int TVSrl::read(std::istream&)
{
    return TVErrC_ok;
}

int TVSrl::write(std::ostream&, int) const
{
    return TVErrC_ok;
}

void tv_srl_extract(std::istream& in, std::string& value)
{
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    value = tv_stream_in(text);
}

void tv_srl_extract(std::istream& in, char& value)
{
    std::string text;
    tv_srl_extract(in, text);
    if (!text.empty() && text[0] != '\0')
        value = text[0];
}
