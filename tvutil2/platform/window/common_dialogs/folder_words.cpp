#include "tvutil2/platform/window/common_dialogs/folder_words.h"

#include "tvutil2/platform/base/language_rows.h"

namespace tvutil2 {
namespace {

struct Words {
    WORD language;  // a primary one, but for simplified Chinese
    const char16_t* words[static_cast<std::size_t>(FolderWord::count)];
};

constexpr Words kWords[] = {
    {0x09,
     {u"Browse for Folder", u"&Make New Folder", u"&Folder:", u"New folder", u"Desktop", u"Home",
      u"Documents", u"Computer", u"Reading…", u"This folder can't be read",
      u"The folder can't be made here.", u"The folder \"%s\" isn't there.", u"Open", u"Save As",
      u"Open", u"Save", u"File &name:", u"Files of &type:",
      u"\"%s\" is already there. Replace it?"}},
    {0x0804,
     {u"浏览文件夹", u"新建文件夹(&M)", u"文件夹(&F)：", u"新建文件夹", u"桌面", u"主目录", u"文档",
      u"计算机", u"正在读取…", u"无法读取此文件夹", u"无法在此处新建文件夹。",
      u"文件夹“%s”不存在。", u"打开", u"另存为", u"打开", u"保存", u"文件名(&N)：",
      u"文件类型(&T)：", u"“%s”已存在。要替换吗？"}},
    {0x04,
     {u"瀏覽資料夾", u"建立新資料夾(&M)", u"資料夾(&F)：", u"新資料夾", u"桌面", u"家目錄", u"文件",
      u"電腦", u"正在讀取…", u"無法讀取此資料夾", u"無法在此處建立資料夾。",
      u"資料夾「%s」不存在。", u"開啟", u"另存新檔", u"開啟", u"儲存", u"檔案名稱(&N)：",
      u"檔案類型(&T)：", u"「%s」已存在。要取代嗎？"}},
    {0x07,
     {u"Ordner suchen", u"N&euen Ordner erstellen", u"&Ordner:", u"Neuer Ordner", u"Schreibtisch",
      u"Persönlicher Ordner", u"Dokumente", u"Computer", u"Wird gelesen …",
      u"Dieser Ordner kann nicht gelesen werden", u"Hier kann kein Ordner erstellt werden.",
      u"Der Ordner „%s“ ist nicht vorhanden.", u"Öffnen", u"Speichern unter", u"Öffnen",
      u"Speichern", u"Datei&name:", u"Datei&typ:", u"„%s“ ist bereits vorhanden. Ersetzen?"}},
    {0x0A,
     {u"Buscar carpeta", u"C&rear nueva carpeta", u"&Carpeta:", u"Nueva carpeta", u"Escritorio",
      u"Carpeta personal", u"Documentos", u"Equipo", u"Leyendo…", u"No se puede leer esta carpeta",
      u"No se puede crear la carpeta aquí.", u"La carpeta «%s» no existe.", u"Abrir",
      u"Guardar como", u"Abrir", u"Guardar", u"&Nombre:", u"&Tipo:",
      u"«%s» ya existe. ¿Desea reemplazarlo?"}},
    {0x0C,
     {u"Rechercher un dossier", u"&Créer un dossier", u"&Dossier :", u"Nouveau dossier", u"Bureau",
      u"Dossier personnel", u"Documents", u"Ordinateur", u"Lecture…",
      u"Ce dossier ne peut pas être lu", u"Impossible de créer un dossier ici.",
      u"Le dossier « %s » n’existe pas.", u"Ouvrir", u"Enregistrer sous", u"Ouvrir", u"Enregistrer",
      u"&Nom du fichier :", u"&Type :", u"« %s » existe déjà. Voulez-vous le remplacer ?"}},
    {0x11,
     {u"フォルダーの参照", u"新しいフォルダーの作成(&M)", u"フォルダー(&F):", u"新しいフォルダー",
      u"デスクトップ", u"ホーム", u"ドキュメント", u"コンピューター", u"読み込み中…",
      u"このフォルダーは読み取れません", u"ここにはフォルダーを作成できません。",
      u"フォルダー「%s」は存在しません。", u"開く", u"名前を付けて保存", u"開く", u"保存",
      u"ファイル名(&N):", u"ファイルの種類(&T):", u"「%s」は既に存在します。置き換えますか?"}},
    {0x12,
     {u"폴더 찾아보기", u"새 폴더 만들기(&M)", u"폴더(&F):", u"새 폴더", u"바탕 화면", u"홈",
      u"문서", u"컴퓨터", u"읽는 중…", u"이 폴더를 읽을 수 없습니다",
      u"여기에 폴더를 만들 수 없습니다.", u"‘%s’ 폴더가 없습니다.", u"열기", u"다른 이름으로 저장",
      u"열기", u"저장", u"파일 이름(&N):", u"파일 형식(&T):",
      u"‘%s’이(가) 이미 있습니다. 바꾸시겠습니까?"}},
    {0x16,
     {u"Procurar pasta", u"&Criar nova pasta", u"&Pasta:", u"Nova pasta", u"Área de trabalho",
      u"Pasta pessoal", u"Documentos", u"Computador", u"Lendo…", u"Não é possível ler esta pasta",
      u"Não é possível criar a pasta aqui.", u"A pasta “%s” não existe.", u"Abrir", u"Salvar como",
      u"Abrir", u"Salvar", u"&Nome:", u"&Tipo:", u"“%s” já existe. Deseja substituí-lo?"}},
    {0x19,
     {u"Обзор папок", u"&Создать папку", u"&Папка:", u"Новая папка", u"Рабочий стол",
      u"Домашняя папка", u"Документы", u"Компьютер", u"Чтение…", u"Не удаётся прочитать эту папку",
      u"Здесь нельзя создать папку.", u"Папка «%s» не существует.", u"Открыть", u"Сохранить как",
      u"Открыть", u"Сохранить", u"&Имя файла:", u"&Тип файлов:",
      u"«%s» уже существует. Заменить?"}},
    {0x1B,
     {u"Vyhľadať priečinok", u"&Vytvoriť nový priečinok", u"&Priečinok:", u"Nový priečinok",
      u"Pracovná plocha", u"Domovský priečinok", u"Dokumenty", u"Počítač", u"Načítava sa…",
      u"Tento priečinok sa nedá prečítať", u"Tu sa priečinok nedá vytvoriť.",
      u"Priečinok „%s“ neexistuje.", u"Otvoriť", u"Uložiť ako", u"Otvoriť", u"Uložiť",
      u"&Názov súboru:", u"&Typ súborov:", u"„%s“ už existuje. Nahradiť?"}},
};

}  // namespace

const char16_t* folder_word(FolderWord word, LANGID language) {
    return row_or_english(kWords, language).words[static_cast<std::size_t>(word)];
}

}  // namespace tvutil2
