#include "storage/LoggingSettings.h"

#include "app/IniFile.h"

namespace halvo {

void LoggingSettings::Clip() {
    if (commentLine1.size() > kMaxCommentBytes) commentLine1.resize(kMaxCommentBytes);
    if (commentLine2.size() > kMaxCommentBytes) commentLine2.resize(kMaxCommentBytes);
}

LoggingSettings LoggingSettings::Load(IniFile& ini) {
    const LoggingSettings d;
    LoggingSettings s;
    s.commentLine1 = ini.ReadString("CommentLine1", d.commentLine1);
    s.commentLine2 = ini.ReadString("CommentLine2", d.commentLine2);
    s.enablePerFileLog = ini.ReadInt("EnablePerFileLog", d.enablePerFileLog);
    s.flags = ini.ReadInt("Flags", d.flags);
    s.Clip();
    return s;
}

void LoggingSettings::Save(IniFile& ini) const {
    ini.WriteString("CommentLine1", commentLine1);
    ini.WriteString("CommentLine2", commentLine2);
    ini.WriteInt("EnablePerFileLog", enablePerFileLog);
    ini.WriteInt("Flags", flags);
}

}  // namespace halvo
