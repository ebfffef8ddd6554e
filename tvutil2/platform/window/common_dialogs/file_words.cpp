#include "tvutil2/platform/window/common_dialogs/file_words.h"

#include "tvutil2/platform/base/language_rows.h"

namespace tvutil2 {
namespace {

struct FileWords {
    WORD language;  // a primary one, but for simplified Chinese
    const char16_t* words[static_cast<std::size_t>(FileWord::count)];
};
struct FileFormats {
    WORD language;
    FileFormat format;
};

constexpr FileWords kFileWords[] = {
    {0x09,
     {u"&Up", u"Name", u"Size", u"Changed", u"Type", u"Downloads", u"Folder", u"File", u"%s file",
      u"Nothing to show here", u"The file \"%s\" isn't there.", u"\"%s\" isn't there. Create it?",
      u"Open as &read-only"}},
    {0x0804,
     {u"上一级(&U)", u"名称", u"大小", u"修改时间", u"类型", u"下载", u"文件夹", u"文件",
      u"%s 文件", u"没有可显示的内容", u"文件“%s”不存在。", u"“%s”不存在。要创建吗？",
      u"以只读方式打开(&R)"}},
    {0x04,
     {u"上一層(&U)", u"名稱", u"大小", u"修改時間", u"類型", u"下載", u"資料夾", u"檔案",
      u"%s 檔案", u"沒有可顯示的內容", u"檔案「%s」不存在。", u"「%s」不存在。要建立嗎？",
      u"以唯讀方式開啟(&R)"}},
    {0x07,
     {u"Na&ch oben", u"Name", u"Größe", u"Geändert", u"Typ", u"Downloads", u"Ordner", u"Datei",
      u"%s-Datei", u"Hier gibt es nichts anzuzeigen", u"Die Datei „%s“ ist nicht vorhanden.",
      u"„%s“ ist nicht vorhanden. Anlegen?", u"&Schreibgeschützt öffnen"}},
    {0x0A,
     {u"&Subir", u"Nombre", u"Tamaño", u"Modificado", u"Tipo", u"Descargas", u"Carpeta", u"Archivo",
      u"Archivo %s", u"No hay nada que mostrar", u"El archivo «%s» no existe.",
      u"«%s» no existe. ¿Desea crearlo?", u"Abrir como so&lo lectura"}},
    {0x0C,
     {u"&Remonter", u"Nom", u"Taille", u"Modifié", u"Type", u"Téléchargements", u"Dossier",
      u"Fichier", u"Fichier %s", u"Rien à afficher ici", u"Le fichier « %s » n’existe pas.",
      u"« %s » n’existe pas. Voulez-vous le créer ?", u"Ouvrir en &lecture seule"}},
    {0x11,
     {u"上へ(&U)", u"名前", u"サイズ", u"更新日時", u"種類", u"ダウンロード", u"フォルダー",
      u"ファイル", u"%s ファイル", u"表示する項目はありません", u"ファイル「%s」は存在しません。",
      u"「%s」は存在しません。作成しますか?", u"読み取り専用で開く(&R)"}},
    {0x12,
     {u"위로(&U)", u"이름", u"크기", u"수정한 날짜", u"유형", u"다운로드", u"폴더", u"파일",
      u"%s 파일", u"표시할 항목이 없습니다", u"‘%s’ 파일이 없습니다.",
      u"‘%s’이(가) 없습니다. 만드시겠습니까?", u"읽기 전용으로 열기(&R)"}},
    {0x16,
     {u"Aci&ma", u"Nome", u"Tamanho", u"Modificado", u"Tipo", u"Downloads", u"Pasta", u"Arquivo",
      u"Arquivo %s", u"Nada para mostrar aqui", u"O arquivo “%s” não existe.",
      u"“%s” não existe. Deseja criá-lo?", u"Abrir como somente &leitura"}},
    {0x19,
     {u"В&верх", u"Имя", u"Размер", u"Дата изменения", u"Тип", u"Загрузки", u"Папка", u"Файл",
      u"Файл %s", u"Здесь нечего показать", u"Файл «%s» не существует.",
      u"«%s» не существует. Создать?", u"Открыть только для &чтения"}},
    {0x1B,
     {u"Na&hor", u"Názov", u"Veľkosť", u"Zmenené", u"Typ", u"Prevzaté", u"Priečinok", u"Súbor",
      u"Súbor %s", u"Nie je čo zobraziť", u"Súbor „%s“ neexistuje.", u"„%s“ neexistuje. Vytvoriť?",
      u"Otvoriť len na čít&anie"}},
};

constexpr FileFormats kFileFormats[] = {
    {0x09, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u'.', u"yyyy-MM-dd"}},
    {0x0804, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u'.', u"yyyy/MM/dd"}},
    {0x04, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u'.', u"yyyy/MM/dd"}},
    {0x07, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u',', u"dd.MM.yyyy"}},
    {0x0A, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u',', u"dd/MM/yyyy"}},
    {0x0C, {{u"o", u"Ko", u"Mo", u"Go", u"To"}, u',', u"dd/MM/yyyy"}},
    {0x11, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u'.', u"yyyy/MM/dd"}},
    {0x12, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u'.', u"yyyy-MM-dd"}},
    {0x16, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u',', u"dd/MM/yyyy"}},
    {0x19, {{u"Б", u"КБ", u"МБ", u"ГБ", u"ТБ"}, u',', u"dd.MM.yyyy"}},
    {0x1B, {{u"B", u"KB", u"MB", u"GB", u"TB"}, u',', u"d. M. yyyy"}},
};

}  // namespace

const char16_t* file_word(FileWord word, LANGID language) {
    return row_or_english(kFileWords, language).words[static_cast<std::size_t>(word)];
}

const FileFormat& file_format(LANGID language) {
    return row_or_english(kFileFormats, language).format;
}

}  // namespace tvutil2
