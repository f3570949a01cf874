#ifndef TVDBFORMAT_H
#define TVDBFORMAT_H

// The words of a database's main and partial files (doc/file-format.md),
// shared by the reader and the writer so that the two cannot drift apart.
// None of them may change, and a retired one is never reused: every file
// ever written holds them.
//
//   file   := identifier LF "!Version!" version LF db-object { object }
//   block  := [ "!Transaction!" id ":" operation LF ] [ db-object ] { object }
//   object := "@O:" LF "{" class LF fields "}" LF

struct TVDBFormat
{
    static constexpr const char* C_Identifier = "TVDatabase:7685"; // line 1
    static constexpr const char* C_Version = "Version";            // line 2
    static constexpr const char* C_Transaction = "Transaction";    // a block's first field
    static constexpr const char* C_ObjectStart = "O:";             // the tag of every object
    // The only version of the file there has been.
    static constexpr int C_LatestFileVersion = 0;
};

#endif // TVDBFORMAT_H
