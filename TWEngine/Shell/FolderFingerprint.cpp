#include "TWEngine/Shell/FolderFingerprint.h"

#include "TWCore/Shell/ShellLiteral.h"

namespace tw::FolderFingerprint {

std::string posix(std::string_view path)
{
    return "ls -lanA -- " + ShellLiteral::posix(path) + " 2>/dev/null | cksum";
}

std::string windows(std::string_view path)
{
    if (path.starts_with('/'))
        path.remove_prefix(1);
    std::string quoted;
    for (auto const letter : path)
        quoted.append(letter == '\'' ? 2 : 1, letter);
    return "$sb = New-Object System.Text.StringBuilder; "
           "Get-ChildItem -LiteralPath '" +
           quoted +
           "' -Force -ErrorAction SilentlyContinue | ForEach-Object { [void]$sb.Append($_.Name); "
           "[void]$sb.Append($_.Length); [void]$sb.Append($_.LastWriteTimeUtc.Ticks); "
           "[void]$sb.Append([int]$_.Attributes) }; "
           "$md5 = [System.Security.Cryptography.MD5]::Create(); "
           "[Console]::Out.Write([System.BitConverter]::ToString($md5.ComputeHash("
           "[System.Text.Encoding]::Unicode.GetBytes($sb.ToString()))).Replace('-','').Substring(0,16))";
}

} // namespace tw::FolderFingerprint
