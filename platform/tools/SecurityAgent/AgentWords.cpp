#include "AgentWords.h"

#include "UsersWords.h"

namespace {

constexpr std::array<AgentWords, 6> kWords = { {
    { "en", "Confirm Changes", "“%1” wants to make changes.",
        "If you allow this, it can install and remove software on the trial startup volume:",
        "No password is needed, because this folder belongs to you.", "Allow", "Cancel", "Allow this? [y/N]",
        "y yes", "n no", "Please answer y or n." },
    { "de", "Änderungen bestätigen", "„%1“ möchte Änderungen vornehmen.",
        "Wenn Sie das erlauben, kann das Programm auf dem Test-Startvolume Software installieren und "
        "entfernen:",
        "Ein Passwort ist nicht nötig, da dieser Ordner Ihnen gehört.", "Erlauben", "Abbrechen",
        "Erlauben? [j/N]", "j ja y yes", "n nein no", "Bitte antworten Sie mit j oder n." },
    { "es", "Confirmar los cambios", "“%1” quiere hacer cambios.",
        "Si lo permite, podrá instalar y eliminar software en el volumen de arranque de prueba:",
        "No se necesita contraseña, porque esta carpeta le pertenece.", "Permitir", "Cancelar",
        "¿Permitirlo? [s/N]", "s si sí y yes", "n no", "Responda s o n." },
    { "fr", "Confirmer les modifications", "«\u00A0%1\u00A0» souhaite effectuer des modifications.",
        "Si vous l’autorisez, il pourra installer et supprimer des logiciels sur le volume de démarrage "
        "d’essai\u00A0:",
        "Aucun mot de passe n’est requis, car ce dossier vous appartient.", "Autoriser", "Annuler",
        "Autoriser\u00A0? [o/N]", "o oui y yes", "n non no", "Répondez par o ou n." },
    { "ja", "変更の確認", "「%1」が変更を行おうとしています。",
        "許可すると、次の試用起動ボリュームでソフトウェアをインストールおよび削除できるようになります：",
        "このフォルダの所有者はあなたなので、パスワードは不要です。", "許可", "キャンセル",
        "許可しますか？ [y/N]", "y yes はい", "n no いいえ", "yまたはnで答えてください。" },
    { "zh-Hans", "确认更改", "“%1”想要进行更改。", "如果您允许，它将可以在以下试用启动宗卷上安装和移除软件：",
        "此文件夹归您所有，因此不需要密码。", "允许", "取消", "允许吗？ [y/N]", "y yes 是", "n no 否 不",
        "请回答 y 或 n。" },
} };

}

const AgentWords& UsersAgentWords() { return UsersWords(kWords); }
