<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>CPopObjectList</name>
    <message>
        <source>Выбор ресурса</source>
        <translation>Choose resource</translation>
    </message>
    <message>
        <source>ОК</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Свойства</source>
        <translation>Properties</translation>
    </message>
    <message>
        <source>Свойства таблицы</source>
        <translation>Table properties</translation>
    </message>
    <message>
        <source>Новая таблица</source>
        <translation>New table</translation>
    </message>
    <message>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Удалить таблицу</source>
        <translation>Delete table</translation>
    </message>
    <message>
        <source>Что предложить</source>
        <translation>What to offer</translation>
    </message>
    <message>
        <source>Список ресурсов</source>
        <translation>List of resources</translation>
    </message>
    <message>
        <source>Выбор иконок АРМ</source>
        <translation>Choose workstation icons</translation>
    </message>
    <message>
        <source>Выбор файлов</source>
        <translation>Choose files</translation>
    </message>
    <message>
        <source>Закрыть</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>OrvoDesktop</name>
    <message>
        <source>Поиск</source>
        <translation>Search</translation>
    </message>
</context>
<context>
    <name>OrvoMenu</name>
    <message>
        <source>MainWindow</source>
        <translation>MainWindow</translation>
    </message>
    <message>
        <source>toolBar</source>
        <translation>toolBar</translation>
    </message>
    <message>
        <source>Папку</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Создать папку</source>
        <translation>Create folder</translation>
    </message>
    <message>
        <source>Рабочий стол</source>
        <translation>Desktop</translation>
    </message>
    <message>
        <source>Переместить вверх</source>
        <translation>Move up</translation>
    </message>
    <message>
        <source>Переместить вниз</source>
        <translation>Move down</translation>
    </message>
    <message>
        <source>Папка</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Новая папка</source>
        <translation>New folder</translation>
    </message>
    <message>
        <source>Модуль</source>
        <translation>Module</translation>
    </message>
    <message>
        <source>Новый модуль</source>
        <translation>New module</translation>
    </message>
    <message>
        <source>Функция</source>
        <translation>Function</translation>
    </message>
    <message>
        <source>Новая функция</source>
        <translation>New function</translation>
    </message>
    <message>
        <source>Файл</source>
        <translation>File</translation>
    </message>
    <message>
        <source>Новый файл</source>
        <translation>New file</translation>
    </message>
    <message>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Удалить папку или рабочий стол</source>
        <translation>Delete folder or desktop</translation>
    </message>
    <message>
        <source>Удалить элемент</source>
        <translation>Delete item</translation>
    </message>
    <message>
        <source>Копировать</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Вставить</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>Изменить</source>
        <translation>Change</translation>
    </message>
    <message>
        <source>Вырезать</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>Создать</source>
        <translation>New</translation>
    </message>
    <message>
        <source>Новый элемент</source>
        <translation>New item</translation>
    </message>
    <message>
        <source>Вырезанное нельзя вставить в само себя: &quot;%1&quot;.</source>
        <translation>What was cut cannot be pasted into itself: &quot;%1&quot;.</translation>
    </message>
    <message>
        <source>изменено: %1</source>
        <translation>changed: %1</translation>
    </message>
    <message>
        <source>внутри появилось: %1</source>
        <translation>added inside: %1</translation>
    </message>
    <message>
        <source>удалено или перемещено: %1</source>
        <translation>deleted or moved: %1</translation>
    </message>
    <message>
        <source>Не вставлено. После вырезания %1. Посмотрите и вырежьте заново.</source>
        <translation>Not pasted. Since the cut, %1. Check and cut again.</translation>
    </message>
    <message>
        <source>Рабочие столы</source>
        <translation>Desktops</translation>
    </message>
    <message>
        <source>Меню рабочего стола</source>
        <translation>Desktop menu</translation>
    </message>
    <message>
        <source>Паспорт элемента</source>
        <translation>Item properties</translation>
    </message>
    <message>
        <source>Не взято: этого ресурса больше нет, его удалили.
%1</source>
        <translation>Not added: this resource no longer exists, it was deleted.
%1</translation>
    </message>
    <message>
        <source>Это не элемент меню: выбрать для него ничего нельзя.</source>
        <translation>This is not a menu item: nothing can be chosen for it.</translation>
    </message>
    <message>
        <source>Вы действительно хотите удалить папку &quot;</source>
        <translation>Delete folder &quot;</translation>
    </message>
    <message>
        <source>&quot; вместе со всеми входящими элементами из рабочего стола &quot;</source>
        <translation>&quot; and all items in it from desktop &quot;</translation>
    </message>
    <message>
        <source>функцию</source>
        <translation>function</translation>
    </message>
    <message>
        <source>Вы действительно хотите удалить </source>
        <translation>Delete </translation>
    </message>
    <message>
        <source> &quot;</source>
        <translation> &quot;</translation>
    </message>
    <message>
        <source>&quot; из рабочего стола &quot;</source>
        <translation>&quot; from desktop &quot;</translation>
    </message>
    <message>
        <source>&quot;?</source>
        <translation>&quot;?</translation>
    </message>
    <message>
        <source>новая папка1</source>
        <translation>new folder1</translation>
    </message>
    <message>
        <source>новый рабочий стол</source>
        <translation>new desktop</translation>
    </message>
    <message>
        <source>Вы действительно хотите удалить рабочий стол &quot;</source>
        <translation>Delete desktop &quot;</translation>
    </message>
    <message>
        <source>Папка &quot;%1&quot; не удалена: в ней есть рабочие столы или папки.</source>
        <translation>Folder &quot;%1&quot; was not deleted: it contains desktops or folders.</translation>
    </message>
    <message>
        <source>_копия</source>
        <translation>_copy</translation>
    </message>
    <message>
        <source>Список рабочих столов</source>
        <translation>List of desktops</translation>
    </message>
    <message>
        <source>Меню</source>
        <translation>Menu</translation>
    </message>
    <message>
        <source>без имени</source>
        <translation>unnamed</translation>
    </message>
    <message>
        <source>новая папка «%1»</source>
        <translation>new folder “%1”</translation>
    </message>
    <message>
        <source>новый рабочий стол «%1»</source>
        <translation>new desktop “%1”</translation>
    </message>
    <message>
        <source>новое имя «%1»</source>
        <translation>new name “%1”</translation>
    </message>
    <message>
        <source>новая папка меню «%1»</source>
        <translation>new menu folder “%1”</translation>
    </message>
    <message>
        <source>элемент «%1»</source>
        <translation>item “%1”</translation>
    </message>
    <message>
        <source>папка «%1»</source>
        <translation>folder “%1”</translation>
    </message>
    <message>
        <source>рабочий стол «%1»</source>
        <translation>desktop “%1”</translation>
    </message>
    <message>
        <source>Показать как оператору</source>
        <translation>Show as operator</translation>
    </message>
    <message>
        <source>Редактор меню</source>
        <translation>Menu editor</translation>
    </message>
    <message>
        <source>Выберите рабочий стол.</source>
        <translation>Select a desktop.</translation>
    </message>
    <message>
        <source>Имя</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Наименование</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Ресурс</source>
        <translation>Resource</translation>
    </message>
    <message>
        <source>Добавить некуда: сначала выберите рабочий стол, в меню которого это нужно.</source>
        <translation>There is nothing to add to: first choose the desktop in whose menu it belongs.</translation>
    </message>
    <message>
        <source>Не добавлено: строки, к которой вы добавляли, в этом меню больше нет.
Ещё раз — добавить в «%1».</source>
        <translation>Not added: the row you were adding to is no longer in this menu.
Once more adds to “%1”.</translation>
    </message>
</context>
<context>
    <name>OrvoResources</name>
    <message>
        <source>MainWindow</source>
        <translation>MainWindow</translation>
    </message>
    <message>
        <source>toolBar</source>
        <translation>toolBar</translation>
    </message>
    <message>
        <source>Модуль</source>
        <translation>Module</translation>
    </message>
    <message>
        <source>Создать модуль</source>
        <translation>Create module</translation>
    </message>
    <message>
        <source>Функцию</source>
        <translation>Function</translation>
    </message>
    <message>
        <source>Создать функцию</source>
        <translation>Create function</translation>
    </message>
    <message>
        <source>Папку</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Создать папку</source>
        <translation>Create folder</translation>
    </message>
    <message>
        <source>Загрузить файлы</source>
        <translation>Upload files</translation>
    </message>
    <message>
        <source>Извлечь файлы</source>
        <translation>Extract files</translation>
    </message>
    <message>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Вырезать</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>Копировать</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Вставить</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>Снять блокировку</source>
        <translation>Unlock</translation>
    </message>
    <message>
        <source>Открыть схему</source>
        <translation>Open form</translation>
    </message>
    <message>
        <source>Создать</source>
        <translation>New</translation>
    </message>
    <message>
        <source>Не вырезано: %1 держит все ресурсы своего вида.</source>
        <translation>Not cut: %1 holds all resources of its kind.</translation>
    </message>
    <message>
        <source>Не перемещено: %1 ещё не сохранена.</source>
        <translation>Not moved: %1 is not saved yet.</translation>
    </message>
    <message>
        <source>Не перемещено: %1.
</source>
        <translation>Not moved: %1.
</translation>
    </message>
    <message>
        <source>Это не папка: %1.</source>
        <translation>This is not a folder: %1.</translation>
    </message>
    <message>
        <source>Эта папка держит все ресурсы своего вида.</source>
        <translation>This folder holds all resources of its kind.</translation>
    </message>
    <message>
        <source>Здесь место ресурсам другого вида: %1.</source>
        <translation>This is a place for resources of another kind: %1.</translation>
    </message>
    <message>
        <source>Папку нельзя поместить в неё саму.</source>
        <translation>A folder cannot be put into itself.</translation>
    </message>
    <message>
        <source>Такое имя там уже есть: %1.</source>
        <translation>This name already exists there: %1.</translation>
    </message>
    <message>
        <source>Здесь блокировка не снимается: её снимает %1 там, где поставил, или администратор командой orvo-admin unlock %2.</source>
        <translation>The lock cannot be removed here: only %1 can remove it, where it was set, or an administrator by the command orvo-admin unlock %2.</translation>
    </message>
    <message>
        <source>тот, кто её поставил,</source>
        <translation>whoever set it</translation>
    </message>
    <message>
        <source>Каталог ресурсов</source>
        <translation>Resource catalog</translation>
    </message>
    <message>
        <source>Паспорт ресурса</source>
        <translation>Resource properties</translation>
    </message>
    <message>
        <source>Поиск в каталоге</source>
        <translation>Search in catalog</translation>
    </message>
    <message>
        <source>Следующее найденное</source>
        <translation>Next match</translation>
    </message>
    <message>
        <source>Предыдущее найденное</source>
        <translation>Previous match</translation>
    </message>
    <message>
        <source>Искать по</source>
        <translation>Search by</translation>
    </message>
    <message>
        <source>новый модуль</source>
        <translation>new module</translation>
    </message>
    <message>
        <source>новая функция</source>
        <translation>new function</translation>
    </message>
    <message>
        <source>новая папка</source>
        <translation>new folder</translation>
    </message>
    <message>
        <source>Здесь этого создать нельзя: %1.</source>
        <translation>This cannot be created here: %1.</translation>
    </message>
    <message>
        <source>Сначала закончите правку: %1.
%2</source>
        <translation>Finish the edit first: %1.
%2</translation>
    </message>
    <message>
        <source>Вы действительно хотите удалить выделенные элементы</source>
        <translation>Delete the selected items</translation>
    </message>
    <message>
        <source> (</source>
        <translation> (</translation>
    </message>
    <message>
        <source>) из списка </source>
        <translation>) from the list of </translation>
    </message>
    <message>
        <source>системных ресурсов?</source>
        <translation>system resources?</translation>
    </message>
    <message>
        <source>ресурсов меню?</source>
        <translation>menu resources?</translation>
    </message>
    <message>
        <source>Будет удалено: %1.</source>
        <translation>Will be deleted: %1.</translation>
    </message>
    <message>
        <source>Не удалено: %1 держит все ресурсы своего вида.</source>
        <translation>Not deleted: %1 holds all resources of its kind.</translation>
    </message>
    <message>
        <source>Не удалено: %1 не пуста. Сначала удалите или переместите то, что в ней. Папки, созданные другими, видны после повторного открытия редактора.</source>
        <translation>Not deleted: %1 is not empty. Delete or move what is in it first. Folders created by others are visible after the editor is reopened.</translation>
    </message>
    <message>
        <source>%1: ссылаются элементы меню: %2</source>
        <translation>%1: menu items refer to it: %2</translation>
    </message>
    <message>
        <source>Не удалено: %1.</source>
        <translation>Not deleted: %1.</translation>
    </message>
    <message>
        <source>Используется %1. Выделенные формы всё же удаляются, и элементы меню остаются без них.</source>
        <translation>In use: %1. The selected forms are deleted all the same, and the menu items are left without them.</translation>
    </message>
    <message>
        <source>%1 всё же удаляется, и элементы меню остаются без неё.</source>
        <translation>%1 is deleted all the same, and the menu items are left without it.</translation>
    </message>
    <message>
        <source>Вернуть: «Правка» → «Отменить».</source>
        <translation>To restore: “Edit” → “Undo”.</translation>
    </message>
    <message>
        <source>Выполнение операции невозможно, так как на ресурс есть ссылки из меню.</source>
        <translation>The operation is not possible because menus refer to the resource.</translation>
    </message>
    <message>
        <source>Каждое место открывается из панели «Где используется».</source>
        <translation>Each place can be opened from the “Where used” pane.</translation>
    </message>
    <message>
        <source>Файл «%1» не извлечён: %2</source>
        <translation>File “%1” was not extracted: %2</translation>
    </message>
    <message>
        <source>файл пуст</source>
        <translation>the file is empty</translation>
    </message>
    <message>
        <source>недопустимое имя</source>
        <translation>invalid name</translation>
    </message>
    <message>
        <source>содержимое не получено</source>
        <translation>the content was not received</translation>
    </message>
    <message>
        <source>новая строка «%1»</source>
        <translation>new row “%1”</translation>
    </message>
    <message>
        <source>строка «%1»</source>
        <translation>row “%1”</translation>
    </message>
    <message>
        <source>без имени</source>
        <translation>unnamed</translation>
    </message>
    <message>
        <source>Очистить</source>
        <translation>Clear</translation>
    </message>
    <message>
        <source>Поиск</source>
        <translation>Search</translation>
    </message>
    <message>
        <source>Поиск...</source>
        <translation>Search...</translation>
    </message>
    <message>
        <source> Искать по: </source>
        <translation> Search by: </translation>
    </message>
    <message>
        <source>Наименование</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Ресурс</source>
        <translation>Resource</translation>
    </message>
    <message>
        <source>Редактор ресурсов</source>
        <translation>Resource editor</translation>
    </message>
    <message>
        <source>где используется</source>
        <translation>where used</translation>
    </message>
    <message>
        <source>в меню</source>
        <translation>in menus</translation>
    </message>
    <message>
        <source>рабочих столов</source>
        <translation>desktops</translation>
    </message>
    <message>
        <source>папка</source>
        <translation>folder</translation>
    </message>
    <message>
        <source>файл</source>
        <translation>file</translation>
    </message>
    <message>
        <source>имя файла</source>
        <translation>file name</translation>
    </message>
    <message>
        <source>дата изменения</source>
        <translation>date changed</translation>
    </message>
    <message>
        <source>размер</source>
        <translation>size</translation>
    </message>
    <message>
        <source>Свойство Объект не может быть пустым. Данные не сохранены.</source>
        <translation>The Object property cannot be empty. The data was not saved.</translation>
    </message>
    <message>
        <source>Такой ресурс уже существует. Данные не сохранены.</source>
        <translation>This resource already exists. The data was not saved.</translation>
    </message>
    <message>
        <source>Свойство &quot;Имя папки&quot; не может быть пустым. Данные не сохранены.</source>
        <translation>The &quot;Folder name&quot; property cannot be empty. The data was not saved.</translation>
    </message>
    <message>
        <source>Папка с таким именем уже существует у данного родителя. Данные не сохранены.</source>
        <translation>The parent already has a folder with this name. The data was not saved.</translation>
    </message>
    <message>
        <source>Ресурсы меню</source>
        <translation>Menu resources</translation>
    </message>
    <message>
        <source>Файловые ресурсы</source>
        <translation>File resources</translation>
    </message>
    <message>
        <source>Непривязанные объекты</source>
        <translation>Unattached objects</translation>
    </message>
    <message>
        <source>ресурс</source>
        <translation>resource</translation>
    </message>
    <message>
        <source>это не файл</source>
        <translation>this is not a file</translation>
    </message>
    <message>
        <source>файл слишком велик</source>
        <translation>the file is too large</translation>
    </message>
    <message>
        <source>файл стал короче, пока читался</source>
        <translation>the file became shorter while it was read</translation>
    </message>
    <message>
        <source>Здесь нет места загруженным файлам: %1.</source>
        <translation>This is no place for uploaded files: %1.</translation>
    </message>
    <message>
        <source>Загрузка форм в БД</source>
        <translation>Uploading forms to the database</translation>
    </message>
    <message>
        <source>Загрузка файлов в БД</source>
        <translation>Uploading files to the database</translation>
    </message>
    <message>
        <source>Все файлы (</source>
        <translation>All files (</translation>
    </message>
    <message>
        <source>Файл «%1» не загружен: %2</source>
        <translation>File “%1” was not uploaded: %2</translation>
    </message>
    <message>
        <source>Вставлено не всё. После вырезания удалено: %1.</source>
        <translation>Not everything was pasted. Deleted since they were cut: %1.</translation>
    </message>
    <message>
        <source>Не вставлено. После вырезания удалено: %1.</source>
        <translation>Nothing was pasted. Deleted since they were cut: %1.</translation>
    </message>
</context>
<context>
    <name>PasspDelegate</name>
    <message>
        <source>выделено строк: %1</source>
        <translation>rows selected: %1</translation>
    </message>
    <message>
        <source>разные значения</source>
        <translation>different values</translation>
    </message>
</context>
<context>
    <name>orvo</name>
    <message>
        <source>Хранилище: путь к файлу, sqlite:///путь/orvo.db или postgresql://узел/база.</source>
        <translation>Store: path of a file, sqlite:///path/orvo.db or postgresql://host/database.</translation>
    </message>
    <message>
        <source>Показать справку и закончить.</source>
        <translation>Show help and exit.</translation>
    </message>
    <message>
        <source>Показать версию и закончить.</source>
        <translation>Show the version and exit.</translation>
    </message>
    <message>
        <source>Напечатать дополнение команд для оболочки.</source>
        <translation>Print command completion for the shell.</translation>
    </message>
    <message>
        <source>Каждая строка вывода - объект JSON.</source>
        <translation>Each line of output is a JSON object.</translation>
    </message>
    <message>
        <source>Показывать ход работы каждую секунду, а не каждые десять, если поток ошибок не терминал.</source>
        <translation>Show progress every second instead of every ten if standard error is not a terminal.</translation>
    </message>
    <message>
        <source>дата 2026-03-31, время 2026-03-31T14:00 (местное; с Z или +03:00 - того пояса) или давность: 90d, 12h, 30m</source>
        <translation>a date (2026-03-31), a time (2026-03-31T14:00, local; with Z or +03:00, of that zone) or an age (90d, 12h, 30m)</translation>
    </message>
    <message>
        <source>Только показать, что было бы записано.</source>
        <translation>Only show what would be written.</translation>
    </message>
    <message>
        <source>Только это и всё внутри: названия сверху через «/» или ключ записи.</source>
        <translation>Only this and everything inside: titles from the top separated by “/”, or the key of the record.</translation>
    </message>
    <message>
        <source>ПУТЬ</source>
        <translation>PATH</translation>
    </message>
    <message>
        <source>Внести под свободным именем то, чьё имя в хранилище уже занято: «а (2).png».</source>
        <translation>Apply under a free name what has a name already taken in the store: “a (2).png”.</translation>
    </message>
    <message>
        <source>%1: %2: имя %3 уже занято (ключ %4)</source>
        <translation>%1: %2: the name %3 is already taken (key %4)</translation>
    </message>
    <message>
        <source>Не внесено</source>
        <translation>Not applied</translation>
    </message>
    <message>
        <source>Оставлено как есть</source>
        <translation>Left as it is</translation>
    </message>
    <message>
        <source>[ХРАНИЛИЩЕ] ХРАНИЛИЩЕ|ВЫГРУЗКА</source>
        <translation>[STORE] STORE|EXPORT</translation>
    </message>
    <message>
        <source>Показать словами, чем одна установка отличается от другой</source>
        <translation>Show in words how one installation differs from another</translation>
    </message>
    <message>
        <source>Что надо сделать с первой (без неё - с хранилищем из --store), чтобы она стала такой, как
вторая. Записи сравниваются по ключам, формы и файлы - и по содержимому. Код завершения 1,
если различия есть.</source>
        <translation>What has to be done to the first (without it, to the store of --store) to make
it like the second. Records are compared by key, forms and files by content as
well. Exit code 1 if there are differences.</translation>
    </message>
    <message>
        <source>[--dry-run] [--only ПУТЬ] [--other-names] [--partly] ВЫГРУЗКА</source>
        <translation>[--dry-run] [--only PATH] [--other-names] [--partly] EXPORT</translation>
    </message>
    <message>
        <source>Внести в хранилище то, чем выгрузка отличается от него</source>
        <translation>Apply the differences of an export to the store</translation>
    </message>
    <message>
        <source>Хранилище не пустое: всё, что в нём есть, пропадёт.</source>
        <translation>The store is not empty: everything in it will be lost.</translation>
    </message>
    <message>
        <source>[--progress] ФАЙЛ</source>
        <translation>[--progress] FILE</translation>
    </message>
    <message>
        <source>Сделать резервную копию хранилища</source>
        <translation>Make a backup of the store</translation>
    </message>
    <message>
        <source>Копия снимает один момент, в который остальные продолжают работать, и содержит всё, с журналом
изменений. Файл появляется целиком или никак; прежний файл с этим именем заменяется. Рядом
ложится его контрольная сумма, ФАЙЛ.sha256: её проверяют restore и sha256sum -c. Копия
хранилища SQLite сама хранилище; копию хранилища PostgreSQL делает pg_dump, и читает её
pg_restore.</source>
        <translation>The backup captures one moment, while others go on working, and holds
everything, the change log included. The file appears whole or not at all; an
earlier file of this name is replaced. Beside it goes its checksum, FILE.sha256,
which restore and sha256sum -c check. The backup of an SQLite store is itself a
store; that of a PostgreSQL store is made by pg_dump and read by pg_restore.</translation>
    </message>
    <message>
        <source>[--replace] [--progress] ФАЙЛ</source>
        <translation>[--replace] [--progress] FILE</translation>
    </message>
    <message>
        <source>Восстановить хранилище из резервной копии</source>
        <translation>Restore the store from a backup</translation>
    </message>
    <message>
        <source>Хранилище должно быть (init) и быть того же вида, что и копия. Одной транзакцией: удаётся всё
или ничего не меняется. Копия проверяется целиком и по контрольной сумме рядом с ней; без суммы
строже проверяется её устройство. Открытые клиенты замечают замену и открывают свои модули
заново.</source>
        <translation>The store must exist (init) and be of the same kind as the backup. In one
transaction: either all succeeds or nothing changes. The backup is checked as a
whole and against the checksum beside it; without a checksum its structure is
checked more strictly. Open clients notice the replacement and reopen their
modules.</translation>
    </message>
    <message>
        <source>Показать все находки, а не первые %1 каждого вида.</source>
        <translation>Show all findings, not only the first %1 of each kind.</translation>
    </message>
    <message>
        <source>Исправить то, что исправляется однозначно; отменяет undo.</source>
        <translation>Fix what has only one possible fix; undo takes it back.</translation>
    </message>
    <message>
        <source>Проверить хранилище</source>
        <translation>Check the store</translation>
    </message>
    <message>
        <source>Называет каждую находку на своей строке: таблица, ключ, название, где стоит, что не так.
Ошибка - то, что потеряно, не видно в редакторах или двусмысленно; замечание - то, на что
стоит взглянуть (например, форма без папки). С --fix сначала исправляет то, что исправляется
однозначно, одним действием истории, которое отменяет undo. Код завершения 1, если остались
ошибки; замечания его не меняют.</source>
        <translation>Names each finding on a line of its own: table, key, title, where it is, what is
wrong. An error is what is lost, not visible in the editors or ambiguous; a
warning is what deserves a look (for example a form without a folder). With
--fix, first fixes what has only one possible fix, as one action of the history,
which undo takes back. Exit code 1 if errors remain; warnings do not change it.</translation>
    </message>
    <message>
        <source>Вырастить до N ресурсов и N элементов меню (от %1 до %2).</source>
        <translation>Grow to N resources and N menu items (from %1 to %2).</translation>
    </message>
    <message>
        <source>Заполнить новое хранилище образцовой установкой</source>
        <translation>Fill a new store with the sample installation</translation>
    </message>
    <message>
        <source>Придуманный газопровод: рабочие столы в папках, меню, ресурсы всех видов, формы с файлами,
значки, пользователи, две блокировки каждого из двух пользователей и одна форма без папки.
Хранилище, в котором уже есть данные, не меняется. Прерванное заполнение не продолжается:
его начинают заново на новом хранилище.</source>
        <translation>An invented gas pipeline: desktops in folders, menus, resources of all kinds,
forms with files, icons, users, two locks of each of two users and one form
without a folder. A store that already has data is not changed. An interrupted
filling is not continued: start again with a new store.</translation>
    </message>
    <message>
        <source>РАСШИРЕНИЕ</source>
        <translation>EXTENSION</translation>
    </message>
    <message>
        <source>Добавить расширение файлов форм</source>
        <translation>Add a file extension of forms</translation>
    </message>
    <message>
        <source>Расширения предлагает окно загрузки форм. Значение стоит в фильтре сразу после «*», поэтому
точка пишется: .ui</source>
        <translation>The form upload window offers the extensions. In the filter the value comes
right after “*”, so the dot is written: .ui</translation>
    </message>
    <message>
        <source>РАСШИРЕНИЕ НОВОЕ</source>
        <translation>EXTENSION NEW</translation>
    </message>
    <message>
        <source>Изменить расширение файлов форм</source>
        <translation>Change a file extension of forms</translation>
    </message>
    <message>
        <source>Формы, которые уже загружены, остаются как были.</source>
        <translation>Forms that are already uploaded stay as they were.</translation>
    </message>
    <message>
        <source>Удалить расширение файлов форм</source>
        <translation>Delete a file extension of forms</translation>
    </message>
    <message>
        <source>Окно загрузки форм его больше не предложит; формы, которые уже загружены, остаются.</source>
        <translation>The form upload window no longer offers it; forms already uploaded stay.</translation>
    </message>
    <message>
        <source>Перечислить расширения файлов форм</source>
        <translation>List the file extensions of forms</translation>
    </message>
    <message>
        <source>Папка: имена через «/»; без ключа - верхняя.</source>
        <translation>Folder: names separated by “/”; without this option, the top one.</translation>
    </message>
    <message>
        <source>ФОРМА КАТАЛОГ</source>
        <translation>FORM DIR</translation>
    </message>
    <message>
        <source>Извлечь файлы формы в каталог</source>
        <translation>Extract the files of a form into a directory</translation>
    </message>
    <message>
        <source>Каталог должен быть. Файлы с теми же именами в нём заменяются, каждый целиком.</source>
        <translation>The directory must exist. Files of the same names in it are replaced, each as a
whole.</translation>
    </message>
    <message>
        <source>[--path ПУТЬ] ИМЯ КАТАЛОГ</source>
        <translation>[--path PATH] NAME DIR</translation>
    </message>
    <message>
        <source>Извлечь файл из файловых ресурсов</source>
        <translation>Extract a file from the file resources</translation>
    </message>
    <message>
        <source>Каталог должен быть. Файл с тем же именем в нём заменяется целиком.</source>
        <translation>The directory must exist. A file of the same name in it is replaced as a whole.</translation>
    </message>
    <message>
        <source>Только эта таблица.</source>
        <translation>Only this table.</translation>
    </message>
    <message>
        <source>ТАБЛИЦА</source>
        <translation>TABLE</translation>
    </message>
    <message>
        <source>Только запись с этим ключом; у формы и файла и замены содержимого.</source>
        <translation>Only the record with this key; for a form or a file also replacements of its content.</translation>
    </message>
    <message>
        <source>КЛЮЧ</source>
        <translation>KEY</translation>
    </message>
    <message>
        <source>Только изменения этого входа; пусто - сделанные вручную.</source>
        <translation>Only changes by this login; if empty, those made by hand.</translation>
    </message>
    <message>
        <source>ВХОД</source>
        <translation>LOGIN</translation>
    </message>
    <message>
        <source>Не раньше: </source>
        <translation>Not before: </translation>
    </message>
    <message>
        <source>КОГДА</source>
        <translation>WHEN</translation>
    </message>
    <message>
        <source>Раньше, чем: </source>
        <translation>Before: </translation>
    </message>
    <message>
        <source>Только действия с этим текстом в старом или новом значении.</source>
        <translation>Only actions with this text in an old or new value.</translation>
    </message>
    <message>
        <source>ТЕКСТ</source>
        <translation>TEXT</translation>
    </message>
    <message>
        <source>Только то, что внутри рабочего стола, папки или элемента меню с этим ключом, или было внутри.</source>
        <translation>Only what is, or was, inside the desktop, folder or menu item with this key.</translation>
    </message>
    <message>
        <source>Не больше N действий (с --json изменений), самых новых.</source>
        <translation>At most N actions (with --json, changes), the newest ones.</translation>
    </message>
    <message>
        <source>[--table ТАБЛИЦА] [--key КЛЮЧ] [--within КЛЮЧ] [--user ВХОД] [--since КОГДА] [--until КОГДА] [--text ТЕКСТ] [--limit N] [--json]</source>
        <translation>[--table TABLE] [--key KEY] [--within KEY] [--user LOGIN] [--since WHEN] [--until WHEN] [--text TEXT] [--limit N] [--json]</translation>
    </message>
    <message>
        <source>Показать, кто, когда и что изменил</source>
        <translation>Show who changed what and when</translation>
    </message>
    <message>
        <source>Действия идут от новых к старым. У каждого строка: номер, время, кто, что сделано, где; под
ней с отступом изменения и поля: было -&gt; стало. Номер берёт undo. «(вручную)» - изменено мимо
программ Orvo в базе, которая не знает входов; «[отменено]» - действие отменено. С --json идут
изменения, у каждого вход и слова его действия. Показывается то, что помнит журнал изменений.</source>
        <translation>Actions come newest first. Each has a line: number, time, who, what was done,
where; below it, indented, the changes and fields: old -&gt; new. The number is
what undo takes. “(by hand)” means changed without the Orvo programs in a
database that knows no logins; “[undone]” means the action was undone. With
--json come the changes, each with the login and the words of its action. Shown
is what the change log remembers.</translation>
    </message>
    <message>
        <source>Сделать хранилище с начальными папками</source>
        <translation>Create a store with the initial folders</translation>
    </message>
    <message>
        <source>Делает таблицы, журнал изменений и папки, которых ждут редакторы: «модули», «функции»,
«формы отображения» и папку значков «icons». Хранилище, которое уже есть, остаётся как было;
недостающие начальные папки добавляются. Каталог для файла должен быть; сам собой делается
только каталог хранилища по умолчанию. Триггеры, которые ведут журнал, делаются заново, если
каких-то нет или они не такие, как у программы (их называет check): открытые клиенты тогда
открывают модули заново, потому что в журнале могли остаться пропуски.</source>
        <translation>Creates the tables, the change log and the folders that the editors expect:
“модули”, “функции”, “формы отображения” and the icon folder “icons”. A store
that already exists stays as it was; missing initial folders are added. The
directory for the file must exist; only that of the default store is created
automatically. The triggers that keep the log are recreated if any are missing
or differ from those of the program (check names them): open clients then reopen
the modules, because the log may have gaps.</translation>
    </message>
    <message>
        <source>Только эта папка и всё, что в ней.</source>
        <translation>Only this folder and everything in it.</translation>
    </message>
    <message>
        <source>[--path ПУТЬ] [--json]</source>
        <translation>[--path PATH] [--json]</translation>
    </message>
    <message>
        <source>Перечислить формы</source>
        <translation>List the forms</translation>
    </message>
    <message>
        <source>На каждой строке через табуляцию: путь и имя формы, название, кто держит блокировку.
Форма, папки которой нет, стоит под «?/».</source>
        <translation>Each line, separated by tabs: path and name of the form, title, lock holder.
A form whose folder does not exist is listed under “?/”.</translation>
    </message>
    <message>
        <source>Перечислить файлы файловых ресурсов</source>
        <translation>List the files of the file resources</translation>
    </message>
    <message>
        <source>На каждой строке через табуляцию: путь и имя файла, размер в байтах, время (UTC).</source>
        <translation>Each line, separated by tabs: path and name of the file, size in bytes,
time (UTC).</translation>
    </message>
    <message>
        <source>Кто держит блокировку.</source>
        <translation>Who holds the lock.</translation>
    </message>
    <message>
        <source>ФОРМА --login ВХОД</source>
        <translation>FORM --login LOGIN</translation>
    </message>
    <message>
        <source>Заблокировать форму за пользователем</source>
        <translation>Lock a form for a user</translation>
    </message>
    <message>
        <source>Форма, которую держит другой пользователь, остаётся за ним.</source>
        <translation>A form that another user holds stays with that user.</translation>
    </message>
    <message>
        <source>ФОРМА</source>
        <translation>FORM</translation>
    </message>
    <message>
        <source>Снять блокировку формы</source>
        <translation>Unlock a form</translation>
    </message>
    <message>
        <source>Забыть и изменения журнала старше: </source>
        <translation>Also forget changes in the log older than: </translation>
    </message>
    <message>
        <source>МИБ</source>
        <translation>MIB</translation>
    </message>
    <message>
        <source>Только сказать, сколько забылось бы.</source>
        <translation>Only say how much would be forgotten.</translation>
    </message>
    <message>
        <source>Забыть прежнее содержимое форм и файлов и старые изменения в журнале</source>
        <translation>Forget earlier content of forms and files and old changes in the log</translation>
    </message>
    <message>
        <source>Сделать папки пути, которых нет.</source>
        <translation>Create missing folders of the path.</translation>
    </message>
    <message>
        <source>[--path ПУТЬ] [--make-folders] ФАЙЛ...</source>
        <translation>[--path PATH] [--make-folders] FILE...</translation>
    </message>
    <message>
        <source>Загрузить форму из её файлов</source>
        <translation>Upload a form from its files</translation>
    </message>
    <message>
        <source>Загрузить файлы в файловые ресурсы</source>
        <translation>Upload files into the file resources</translation>
    </message>
    <message>
        <source>Файл с тем же именем в той же папке заменяется. Загружаются все файлы или ни один.</source>
        <translation>A file of the same name in the same folder is replaced. All files are uploaded,
or none.</translation>
    </message>
    <message>
        <source>[--progress] ФАЙЛ|-</source>
        <translation>[--progress] FILE|-</translation>
    </message>
    <message>
        <source>Выгрузить всю установку в JSON</source>
        <translation>Export the whole installation to JSON</translation>
    </message>
    <message>
        <source>Все таблицы и все сохранённые формы и файлы, как они есть в один момент; без журнала
изменений, входов на сервер и паролей. Каждая запись на своей строке, по порядку ключей:
выгрузки можно сравнивать. «-» - в стандартный вывод. Файл появляется целиком или никак.</source>
        <translation>All tables and all stored forms and files as they are at one moment; without the
change log, server logins and passwords. Each record is on a line of its own, in
the order of keys: exports can be compared. “-” means standard output. The file
appears whole or not at all.</translation>
    </message>
    <message>
        <source>[--replace] [--progress] ФАЙЛ|-</source>
        <translation>[--replace] [--progress] FILE|-</translation>
    </message>
    <message>
        <source>Загрузить выгруженную установку</source>
        <translation>Import an exported installation</translation>
    </message>
    <message>
        <source>В хранилище любого вида, одной транзакцией: при первой же негодной записи не меняется ничего,
а сообщение называет строку, таблицу и номер записи. Всё, что хранилище держало, заменяется;
если это не только начальные папки, нужен ключ --replace. Ссылки в никуда и круги родителей
загружаются, как были: их назовёт check. Пользователи загружаются без входов на сервер; у кого
входа нет, тех команда называет. «-» - со стандартного ввода.</source>
        <translation>Into a store of any kind, in one transaction: at the first bad record nothing
changes, and the message names the line, the table and the number of the record.
Everything the store held is replaced; if that is more than the initial folders,
--replace is needed. Links that lead nowhere and loops of parents are imported
as they were: check names them. Users are imported without server logins; the
command names those who have none. “-” means standard input.</translation>
    </message>
    <message>
        <source>Вернуть под свободным именем то, чьё имя уже занято: «а (2).png».</source>
        <translation>Restore under a free name what has a name already taken: “a (2).png”.</translation>
    </message>
    <message>
        <source>Отменить без того, чему нет места, чьё имя занято, чей ресурс удалён или на чём построили другие.</source>
        <translation>Undo without what has no place, what has a name already taken, what had its resource deleted or what others have built on.</translation>
    </message>
    <message>
        <source>БЫЛА=СТАЛА</source>
        <translation>OLD=NEW</translation>
    </message>
    <message>
        <source>Отменить действия из истории</source>
        <translation>Undo actions of the history</translation>
    </message>
    <message>
        <source>Номера - из history; отменяется всё действие, которому изменение принадлежит, несколько - одной
транзакцией. Что с тех пор изменили другие, остаётся как есть и называется; тогда код
завершения 1. Отмена - тоже действие: отменить её - значит повторить отменённое.</source>
        <translation>The numbers come from history; the whole action that a change belongs to is
undone, several of them in one transaction. What others have changed since stays
as it is and is named; the exit code is then 1. Undoing is an action too:
undoing it redoes what was undone.</translation>
    </message>
    <message>
        <source>Фамилия.</source>
        <translation>Last name.</translation>
    </message>
    <message>
        <source>ФАМИЛИЯ</source>
        <translation>LASTNAME</translation>
    </message>
    <message>
        <source>Имя.</source>
        <translation>First name.</translation>
    </message>
    <message>
        <source>ИМЯ</source>
        <translation>NAME</translation>
    </message>
    <message>
        <source>Отчество.</source>
        <translation>Middle name.</translation>
    </message>
    <message>
        <source>ОТЧЕСТВО</source>
        <translation>MIDDLENAME</translation>
    </message>
    <message>
        <source>Это программа, а не человек: показывается по входу.</source>
        <translation>This is a program, not a person: shown by its login.</translation>
    </message>
    <message>
        <source>Только читает (хранилище PostgreSQL).</source>
        <translation>Only reads (PostgreSQL store).</translation>
    </message>
    <message>
        <source>Задать пароль входа: первая строка стандартного ввода (хранилище PostgreSQL).</source>
        <translation>Set the password of the login: the first line of standard input (PostgreSQL store).</translation>
    </message>
    <message>
        <source>Это человек: показывается по фамилии.</source>
        <translation>This is a person: shown by last name.</translation>
    </message>
    <message>
        <source>Отныне только читает (хранилище PostgreSQL).</source>
        <translation>From now on only reads (PostgreSQL store).</translation>
    </message>
    <message>
        <source>Отныне и пишет (хранилище PostgreSQL).</source>
        <translation>From now on also writes (PostgreSQL store).</translation>
    </message>
    <message>
        <source>Сменить пароль входа: первая строка стандартного ввода (хранилище PostgreSQL).</source>
        <translation>Change the password of the login: the first line of standard input (PostgreSQL store).</translation>
    </message>
    <message>
        <source>Только читает.</source>
        <translation>Only reads.</translation>
    </message>
    <message>
        <source>Задать пароль входа: первая строка стандартного ввода.</source>
        <translation>Set the password of the login: the first line of standard input.</translation>
    </message>
    <message>
        <source>ВХОД [--last ФАМИЛИЯ] [--first ИМЯ] [--middle ОТЧЕСТВО] [--program] [--viewer] [--password-stdin]</source>
        <translation>LOGIN [--last LASTNAME] [--first NAME] [--middle MIDDLENAME] [--program] [--viewer] [--password-stdin]</translation>
    </message>
    <message>
        <source>Добавить пользователя</source>
        <translation>Add a user</translation>
    </message>
    <message>
        <source>В хранилище PostgreSQL пользователь получает и вход на сервер: с правом записи или, с
--viewer, только чтения.</source>
        <translation>In a PostgreSQL store the user also gets a server login: with the right to write
or, with --viewer, only to read.</translation>
    </message>
    <message>
        <source>ВХОД [--last ФАМИЛИЯ] [--first ИМЯ] [--middle ОТЧЕСТВО] [--program | --person] [--viewer | --engineer] [--password-stdin]</source>
        <translation>LOGIN [--last LASTNAME] [--first NAME] [--middle MIDDLENAME] [--program | --person] [--viewer | --engineer] [--password-stdin]</translation>
    </message>
    <message>
        <source>Изменить пользователя</source>
        <translation>Change a user</translation>
    </message>
    <message>
        <source>Меняется то, что названо. Имя входа не меняется: под ним пользователь стоит в истории.
--viewer, --engineer и --password-stdin меняют права и пароль входа на сервер PostgreSQL.</source>
        <translation>What is given changes. The login name does not: it stands for the user in the
history. --viewer, --engineer and --password-stdin change the rights and the
password of the login on the PostgreSQL server.</translation>
    </message>
    <message>
        <source>Удалить пользователя</source>
        <translation>Delete a user</translation>
    </message>
    <message>
        <source>Вместе с ним снимаются его блокировки форм; его изменения в истории остаются. На сервере
PostgreSQL он теряет права на хранилища Orvo; сам вход остаётся, его удаляет DROP ROLE.</source>
        <translation>The form locks of the user are removed as well; the changes of the user remain
in the history. On a PostgreSQL server the user loses the rights to Orvo stores;
the login itself remains, DROP ROLE deletes it.</translation>
    </message>
    <message>
        <source>ВХОД [--viewer] [--password-stdin]</source>
        <translation>LOGIN [--viewer] [--password-stdin]</translation>
    </message>
    <message>
        <source>Дать пользователю вход на сервер</source>
        <translation>Give a user a server login</translation>
    </message>
    <message>
        <source>Для пользователя, который есть в таблице, но не на сервере: после import в другое хранилище
PostgreSQL или restore на другой сервер. Права и пароль - как у user add.</source>
        <translation>For a user who is in the table but not on the server: after import into another
PostgreSQL store or restore on another server. Rights and password are as in
user add.</translation>
    </message>
    <message>
        <source>Перечислить пользователей</source>
        <translation>List the users</translation>
    </message>
    <message>
        <source>На каждой строке через табуляцию: имя входа, фамилия имя отчество, «человек» или «программа».</source>
        <translation>Each line, separated by tabs: login name, last first middle name, “person” or
“program”.</translation>
    </message>
    <message>
        <source>Рабочий каталог %1 не создан или закрыт для записи.</source>
        <translation>Working directory %1 was not created or is not writable.</translation>
    </message>
    <message>
        <source>Модули</source>
        <translation>Modules</translation>
    </message>
    <message>
        <source>Файловая область</source>
        <translation>File area</translation>
    </message>
    <message>
        <source>Открываются модули: читаются таблицы…</source>
        <translation>Opening the modules: reading tables…</translation>
    </message>
    <message>
        <source>Ошибка %1</source>
        <translation>Error %1</translation>
    </message>
    <message>
        <source>модули открыты заново</source>
        <translation>the modules were reopened</translation>
    </message>
    <message>
        <source>Хранилище</source>
        <translation>Store</translation>
    </message>
    <message>
        <source>показанное устарело, модули откроются заново, когда вы закончите правку</source>
        <translation>what is shown is out of date, the modules will reopen when you finish the edit</translation>
    </message>
    <message>
        <source>Модули открыты заново.</source>
        <translation>The modules were reopened.</translation>
    </message>
    <message>
        <source>Окно не открыто: %1</source>
        <translation>The window was not opened: %1</translation>
    </message>
    <message>
        <source>Выход</source>
        <translation>Exit</translation>
    </message>
    <message>
        <source>Форма</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>Клиент</source>
        <translation>Client</translation>
    </message>
    <message>
        <source>Ни одна библиотека модулей не знает модуля «%1».</source>
        <translation>No module library knows module “%1”.</translation>
    </message>
    <message>
        <source>Модуль не запущен; причина в журнале. «Клиент» — «Открыть модули заново» повторит попытку.</source>
        <translation>The module was not started; the log tells why. “Client” — “Reopen the modules” tries again.</translation>
    </message>
    <message>
        <source>Открыть модули заново</source>
        <translation>Reopen the modules</translation>
    </message>
    <message>
        <source>%1 — модули откроются заново</source>
        <translation>%1 — the modules will reopen</translation>
    </message>
    <message>
        <source>Связь</source>
        <translation>Connection</translation>
    </message>
    <message>
        <source>Хранилище снова на месте.</source>
        <translation>The store is back in place.</translation>
    </message>
    <message>
        <source>Проблемы</source>
        <translation>Problems</translation>
    </message>
    <message>
        <source>&amp;Проблемы</source>
        <translation>&amp;Problems</translation>
    </message>
    <message>
        <source>Модули открыты заново: показано исправленное.</source>
        <translation>The modules were reopened: they show what was fixed.</translation>
    </message>
    <message>
        <source>&amp;Не записано</source>
        <translation>&amp;Not written</translation>
    </message>
    <message>
        <source>Не записано</source>
        <translation>Not written</translation>
    </message>
    <message>
        <source>С прошлого раза</source>
        <translation>From last time</translation>
    </message>
    <message>
        <source>стоит вопрос</source>
        <translation>a question is open</translation>
    </message>
    <message>
        <source>открыт выбор</source>
        <translation>a selection list is open</translation>
    </message>
    <message>
        <source>открыта ячейка</source>
        <translation>a cell is open</translation>
    </message>
    <message>
        <source>правка не сохранена и не отменена</source>
        <translation>the edit is neither saved nor discarded</translation>
    </message>
    <message>
        <source>Изменения других покажутся, когда вы закончите.</source>
        <translation>Changes by others will be shown when you finish.</translation>
    </message>
    <message>
        <source>Пользователь %1 может здесь только смотреть: изменить ничего нельзя, команды, которые меняют хранилище, выключены. Право менять даёт администратор; на реплике не меняет никто, пока она не станет главным сервером.</source>
        <translation>User %1 may only view here: nothing can be changed, and the commands that change the store are disabled. The administrator grants the right to change; on a replica nobody can change anything until it becomes the primary server.</translation>
    </message>
    <message>
        <source>Сервер теперь принимает изменения.</source>
        <translation>The server now accepts changes.</translation>
    </message>
    <message>
        <source> Модули открыты заново.</source>
        <translation> The modules were reopened.</translation>
    </message>
    <message>
        <source>Журнал изменений очищен раньше, чем прочитан: %1.</source>
        <translation>The change log was cleared before it was read: %1.</translation>
    </message>
    <message>
        <source>Хранилище вернулось к более раннему состоянию, последние изменения потеряны: %1%2.</source>
        <translation>The store went back to an earlier state, the latest changes are lost: %1%2.</translation>
    </message>
    <message>
        <source>, ваши потерянные записи — в «Не записано»</source>
        <translation>, your lost writes are in “Not written”</translation>
    </message>
    <message>
        <source>; запись остановлена. Когда хранилище будет на месте, его откроет «Клиент» — «Открыть модули заново».</source>
        <translation>; writing has stopped. When the store is back in place, “Client” — “Reopen the modules” will open it.</translation>
    </message>
    <message>
        <source>восстановлена, но выполнено не всё: «Клиент» — «Открыть модули заново» покажет, что сохранено.</source>
        <translation>restored, but not everything was done: “Client” — “Reopen the modules” will show what was saved.</translation>
    </message>
    <message>
        <source>Связь с хранилищем восстановлена.</source>
        <translation>The connection to the store is restored.</translation>
    </message>
    <message>
        <source>… и ещё %1</source>
        <translation>… and %1 more</translation>
    </message>
    <message>
        <source>Не сохранено:

%1

Сохранить?</source>
        <translation>Not saved:

%1

Save?</translation>
    </message>
    <message>
        <source>Сохранить</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Не сохранять</source>
        <translation>Discard</translation>
    </message>
    <message>
        <source>Остаться</source>
        <translation>Stay</translation>
    </message>
    <message>
        <source>Рабочий стол</source>
        <translation>Desktop</translation>
    </message>
    <message>
        <source>Поиск...</source>
        <translation>Search...</translation>
    </message>
    <message>
        <source>Поиск рабочего стола</source>
        <translation>Search for a desktop</translation>
    </message>
    <message>
        <source>Рабочие столы</source>
        <translation>Desktops</translation>
    </message>
    <message>
        <source>Открыть</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Каталог %1 недоступен: %2</source>
        <translation>Directory %1 is not accessible: %2</translation>
    </message>
    <message>
        <source>программа просмотра %1 не запускается: %2</source>
        <translation>viewer program %1 does not start: %2</translation>
    </message>
    <message>
        <source>просмотру не хватило %1 МиБ памяти</source>
        <translation>%1 MiB of memory was not enough for the viewer</translation>
    </message>
    <message>
        <source>просмотр не отвечает дольше %1 с</source>
        <translation>the viewer has not responded for more than %1 s</translation>
    </message>
    <message>
        <source>просмотр слишком долго занимает процессор</source>
        <translation>the viewer keeps the processor busy for too long</translation>
    </message>
    <message>
        <source>просмотр завершился аварийно</source>
        <translation>the viewer crashed</translation>
    </message>
    <message>
        <source>просмотр завершился с кодом %1</source>
        <translation>the viewer exited with code %1</translation>
    </message>
    <message>
        <source>Показать снова</source>
        <translation>Show again</translation>
    </message>
    <message>
        <source>просмотр прислал негодный ответ</source>
        <translation>the viewer sent an invalid response</translation>
    </message>
    <message>
        <source>Файл «%1» показать нельзя: %2.</source>
        <translation>File “%1” cannot be shown: %2.</translation>
    </message>
    <message>
        <source>Форма — %1</source>
        <translation>Form — %1</translation>
    </message>
    <message>
        <source>Форма «%1» не получена: %2</source>
        <translation>Form “%1” was not retrieved: %2</translation>
    </message>
    <message>
        <source>Форма «%1» не найдена или не имеет файлов.</source>
        <translation>Form “%1” was not found or has no files.</translation>
    </message>
    <message>
        <source>Нет связи с хранилищем.</source>
        <translation>No connection to the store.</translation>
    </message>
    <message>
        <source>нет связи с хранилищем</source>
        <translation>no connection to the store</translation>
    </message>
    <message>
        <source>Функция «%1» не запущена: %2</source>
        <translation>Function “%1” was not started: %2</translation>
    </message>
    <message>
        <source>Функция «%1» завершилась аварийно (сигнал %2).</source>
        <translation>Function “%1” crashed (signal %2).</translation>
    </message>
    <message>
        <source>Функции «%1» здесь нет: её не знает ни одна библиотека модулей.</source>
        <translation>Function “%1” is not available here: no module library knows it.</translation>
    </message>
    <message>
        <source>Функция «%1» не выполнена; причина в журнале.</source>
        <translation>Function “%1” failed; the log tells why.</translation>
    </message>
    <message>
        <source>Функция «%1» завершилась с кодом %2.</source>
        <translation>Function “%1” exited with code %2.</translation>
    </message>
    <message>
        <source>Руководство</source>
        <translation>Manual</translation>
    </message>
    <message>
        <source>Текст руководства</source>
        <translation>Text of the manual</translation>
    </message>
    <message>
        <source>Назад</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>Вперёд</source>
        <translation>Forward</translation>
    </message>
    <message>
        <source>Оператору</source>
        <translation>For operators</translation>
    </message>
    <message>
        <source>Инженеру</source>
        <translation>For engineers</translation>
    </message>
    <message>
        <source>Администратору</source>
        <translation>For administrators</translation>
    </message>
    <message>
        <source>Автору модулей</source>
        <translation>For module authors</translation>
    </message>
    <message>
        <source>В руководстве нет страницы «%1».</source>
        <translation>The manual has no page “%1”.</translation>
    </message>
    <message>
        <source>Руководство не установлено: файла %1 нет.</source>
        <translation>The manual is not installed: there is no file %1.</translation>
    </message>
    <message>
        <source>Где используется</source>
        <translation>Where used</translation>
    </message>
    <message>
        <source>Где используется ресурс</source>
        <translation>Where the resource is used</translation>
    </message>
    <message>
        <source>Что заблокировано</source>
        <translation>What is locked</translation>
    </message>
    <message>
        <source>не записано</source>
        <translation>not written</translation>
    </message>
    <message>
        <source>Не записано: %1 (Shift+F8)</source>
        <translation>Not written: %1 (Shift+F8)</translation>
    </message>
    <message>
        <source>Неизвестная команда приложению, код %1.</source>
        <translation>Unknown command to the application, code %1.</translation>
    </message>
    <message>
        <source>уже есть файл с таким именем</source>
        <translation>a file with this name already exists</translation>
    </message>
    <message>
        <source>он занят другой программой</source>
        <translation>it is in use by another program</translation>
    </message>
    <message>
        <source>Сокет %1 не открыт: %2</source>
        <translation>Socket %1 was not opened: %2</translation>
    </message>
    <message>
        <source>формы «%1» нет, или у неё нет файлов</source>
        <translation>form “%1” does not exist or has no files</translation>
    </message>
    <message>
        <source>файла «%1» нет</source>
        <translation>file “%1” does not exist</translation>
    </message>
    <message>
        <source>ресурс неизвестного вида %1</source>
        <translation>resource of unknown kind %1</translation>
    </message>
    <message>
        <source>модуля «%1» здесь нет</source>
        <translation>module “%1” is not available here</translation>
    </message>
    <message>
        <source>функции «%1» здесь нет</source>
        <translation>function “%1” is not available here</translation>
    </message>
    <message>
        <source>модуля «%1» здесь нет: его не знает ни одна библиотека модулей</source>
        <translation>module “%1” is not available here: no module library knows it</translation>
    </message>
    <message>
        <source>модуль «%1» не запущен; причина в журнале</source>
        <translation>module “%1” was not started; the log tells why</translation>
    </message>
    <message>
        <source>модуль «%1» не запущен: %2</source>
        <translation>module “%1” was not started: %2</translation>
    </message>
    <message>
        <source>функции «%1» здесь нет: ни у одной библиотеки модулей нет функций</source>
        <translation>function “%1” is not available here: no module library has functions</translation>
    </message>
    <message>
        <source>Сохранить файл</source>
        <translation>Save file</translation>
    </message>
    <message>
        <source>Файл %1 не записан: %2</source>
        <translation>File %1 was not written: %2</translation>
    </message>
    <message>
        <source>Файл сохранён: %1</source>
        <translation>File saved: %1</translation>
    </message>
    <message>
        <source>Закрыть</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Этого элемента в меню больше нет.</source>
        <translation>This item is no longer in the menu.</translation>
    </message>
    <message>
        <source>Элемент меню изменён после открытия.</source>
        <translation>The menu item was changed after it was opened.</translation>
    </message>
    <message>
        <source>Этот ресурс удалён.</source>
        <translation>This resource was deleted.</translation>
    </message>
    <message>
        <source>Ресурс изменён после открытия.</source>
        <translation>The resource was changed after it was opened.</translation>
    </message>
    <message>
        <source>Содержимое изменено после открытия: откройте заново, чтобы увидеть новое.</source>
        <translation>The content was changed after it was opened: open it again to see the new content.</translation>
    </message>
    <message>
        <source>Журнал</source>
        <translation>Log</translation>
    </message>
    <message>
        <source>Время</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>Место</source>
        <translation>Place</translation>
    </message>
    <message>
        <source>Сообщение</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>Копировать</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Очистить</source>
        <translation>Clear</translation>
    </message>
    <message>
        <source>Найти в журнале</source>
        <translation>Search the log</translation>
    </message>
    <message>
        <source>Слова из любого столбца, в любом порядке (Ctrl+F)</source>
        <translation>Words from any column, in any order (Ctrl+F)</translation>
    </message>
    <message>
        <source>&amp;Клиент</source>
        <translation>&amp;Client</translation>
    </message>
    <message>
        <source>&amp;Рабочий стол…</source>
        <translation>&amp;Desktop…</translation>
    </message>
    <message>
        <source>Открыть &amp;хранилище…</source>
        <translation>Open &amp;store…</translation>
    </message>
    <message>
        <source>&amp;Правка</source>
        <translation>&amp;Edit</translation>
    </message>
    <message>
        <source>&amp;Вид</source>
        <translation>&amp;View</translation>
    </message>
    <message>
        <source>&amp;Не переводить меня к правкам других</source>
        <translation>Do not &amp;take me to edits by others</translation>
    </message>
    <message>
        <source>П&amp;ереход</source>
        <translation>&amp;Go</translation>
    </message>
    <message>
        <source>&amp;Справка</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>&amp;О программе</source>
        <translation>&amp;About</translation>
    </message>
    <message>
        <source>О программе</source>
        <translation>About</translation>
    </message>
    <message>
        <source>Клиент инженера: редактор меню и редактор ресурсов.</source>
        <translation>The engineer&apos;s client: menu editor and resource editor.</translation>
    </message>
    <message>
        <source>Редакторы и открытые формы</source>
        <translation>Editors and open forms</translation>
    </message>
    <message>
        <source>Ошибка</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Уведомление</source>
        <translation>Notice</translation>
    </message>
    <message>
        <source>Файловая область не открыта: %1</source>
        <translation>The file area was not opened: %1</translation>
    </message>
    <message>
        <source>Файловая область не прочитана: %1</source>
        <translation>The file area was not read: %1</translation>
    </message>
    <message>
        <source>Список файловой области не получен: %1</source>
        <translation>The list of the file area was not retrieved: %1</translation>
    </message>
    <message>
        <source>«%1» не копируется на диск: в пути есть имя, которое не может быть именем папки или файла.</source>
        <translation>“%1” is not copied to disk: its path has a name that cannot be the name of a folder or file.</translation>
    </message>
    <message>
        <source>Файл «%1» не получен: %2</source>
        <translation>File “%1” was not retrieved: %2</translation>
    </message>
    <message>
        <source>Файл «%1» не записан в %2files: %3</source>
        <translation>File “%1” was not written to %2files: %3</translation>
    </message>
    <message>
        <source>Список копии файловой области не записан: %1</source>
        <translation>The list of the file area copy was not written: %1</translation>
    </message>
    <message>
        <source>%1 нет</source>
        <translation>%1 does not exist</translation>
    </message>
    <message>
        <source>%1 принадлежит другому пользователю</source>
        <translation>%1 belongs to another user</translation>
    </message>
    <message>
        <source>в %1 могут писать другие пользователи</source>
        <translation>other users can write to %1</translation>
    </message>
    <message>
        <source>Библиотек модулей нет: в каталоге %1 ни одной libOrvo*.so.</source>
        <translation>No module libraries: directory %1 has no libOrvo*.so.</translation>
    </message>
    <message>
        <source>Каталог модулей %1 не взят: %2.</source>
        <translation>Module directory %1 was not used: %2.</translation>
    </message>
    <message>
        <source>Библиотека модулей %1 не взята: %2.</source>
        <translation>Module library %1 was not used: %2.</translation>
    </message>
    <message>
        <source>Библиотека модулей не загружена: %1</source>
        <translation>A module library was not loaded: %1</translation>
    </message>
    <message>
        <source>В библиотеке модулей %1 нет ни функции CppCliModule, ни CppCliFunction.</source>
        <translation>Module library %1 has neither the function CppCliModule nor CppCliFunction.</translation>
    </message>
    <message>
        <source>Модуль «%1» не создан: %2</source>
        <translation>Module “%1” was not created: %2</translation>
    </message>
    <message>
        <source>Модуль «%1» не создан.</source>
        <translation>Module “%1” was not created.</translation>
    </message>
    <message>
        <source>Неизвестное исключение.</source>
        <translation>Unknown exception.</translation>
    </message>
    <message>
        <source>Закрыть (Ctrl+W)</source>
        <translation>Close (Ctrl+W)</translation>
    </message>
    <message>
        <source>хранилище: sqlite:///путь/orvo.db, просто путь или postgresql://… (иначе $XDG_DATA_HOME/orvo/orvo.db)</source>
        <translation>store: sqlite:///path/orvo.db, a plain path or postgresql://… (otherwise $XDG_DATA_HOME/orvo/orvo.db)</translation>
    </message>
    <message>
        <source>пользователь, от имени которого идёт запись (иначе $USER)</source>
        <translation>user in whose name changes are written (otherwise $USER)</translation>
    </message>
    <message>
        <source>рабочий каталог с копией файловой области в files/ (иначе $XDG_DATA_HOME/orvo/work)</source>
        <translation>working directory with a copy of the file area in files/ (otherwise $XDG_DATA_HOME/orvo/work)</translation>
    </message>
    <message>
        <source>язык окон и сообщений (иначе - язык рабочего стола)</source>
        <translation>language of windows and messages (otherwise the system language)</translation>
    </message>
    <message>
        <source>каталог с библиотеками модулей, кроме собственного; можно повторять (писать в него и в каталоги над ним может только хозяин)</source>
        <translation>directory with module libraries, besides the program&apos;s own; can be repeated (only the owner may be able to write to it and to the directories above it)</translation>
    </message>
    <message>
        <source>открыть только этот рабочий стол, как его видит оператор: название, путь «папка/стол» или ключ</source>
        <translation>open only this desktop, as the operator sees it: title, path “folder/desktop” or key</translation>
    </message>
    <message>
        <source>рабочий стол на весь экран, без рамки; закрывается по Ctrl+Alt+Q, после вопроса об имени пользователя</source>
        <translation>desktop in full screen, without a frame; closed with Ctrl+Alt+Q, after a question about the user name</translation>
    </message>
    <message>
        <source>открыть ещё одно окно, даже если клиент с тем же хранилищем, пользователем и рабочим каталогом уже работает (иначе модуль откроет он)</source>
        <translation>open another window even if a client with the same store, user and working directory is already running (otherwise that client opens the module)</translation>
    </message>
    <message>
        <source>открыть модули, записать снимок окна в PNG и завершиться</source>
        <translation>open the modules, write a picture of the window to a PNG file and exit</translation>
    </message>
    <message>
        <source>отвечать через локальный сокет, что стоит в окнах и таблицах (для поддержки и проверок; только чтение, только этому пользователю)</source>
        <translation>tell through a local socket what the windows and tables show (for support and tests; read only, for this user only)</translation>
    </message>
    <message>
        <source>напечатать дополнение команд для оболочки</source>
        <translation>print command completion for the shell</translation>
    </message>
    <message>
        <source>эта справка</source>
        <translation>this help</translation>
    </message>
    <message>
        <source>версия</source>
        <translation>version</translation>
    </message>
    <message>
        <source>У параметра в конце командной строки нет значения, или оно лишнее; см. --help.</source>
        <translation>The option at the end of the command line lacks a value or has one it does not take; see --help.</translation>
    </message>
    <message>
        <source>Неизвестный параметр «%1»; см. --help.</source>
        <translation>Unknown option “%1”; see --help.</translation>
    </message>
    <message>
        <source>Лишний аргумент «%1»; см. --help.</source>
        <translation>Unexpected argument “%1”; see --help.</translation>
    </message>
    <message>
        <source>Пустое значение параметра --%1.</source>
        <translation>Empty value of option --%1.</translation>
    </message>
    <message>
        <source>Языка «%1» нет среди %2.</source>
        <translation>Language “%1” is not one of %2.</translation>
    </message>
    <message>
        <source>Оболочки «%1» нет среди %2.</source>
        <translation>Shell “%1” is not one of %2.</translation>
    </message>
    <message>
        <source>Имя пользователя неизвестно; задайте --login NAME.</source>
        <translation>The user name is unknown; set it with --login NAME.</translation>
    </message>
    <message>
        <source>Параметр --kiosk требует --desktop.</source>
        <translation>Option --kiosk requires --desktop.</translation>
    </message>
    <message>
        <source>Рабочий стол открывается без редакторов: --desktop и --module вместе не даются.</source>
        <translation>A desktop opens without editors: --desktop and --module cannot be used together.</translation>
    </message>
    <message>
        <source>orvo-client: редактор меню, редактор ресурсов и рабочий стол оператора.

</source>
        <translation>orvo-client: menu editor, resource editor and operator&apos;s desktop.

</translation>
    </message>
    <message>
        <source>Нет дисплея: переменные DISPLAY и WAYLAND_DISPLAY пусты; запустите в графическом сеансе, через ssh -X или под Xvfb.</source>
        <translation>No display: the variables DISPLAY and WAYLAND_DISPLAY are empty; run it in a graphical session, through ssh -X or under Xvfb.</translation>
    </message>
    <message>
        <source>; новое хранилище делает orvo-admin init</source>
        <translation>; to create a new store, run orvo-admin init</translation>
    </message>
    <message>
        <source>; каталога %1 нет</source>
        <translation>; directory %1 does not exist</translation>
    </message>
    <message>
        <source>; новое хранилище делает orvo-admin --store %1 init</source>
        <translation>; to create a new store, run orvo-admin --store %1 init</translation>
    </message>
    <message>
        <source>с </source>
        <translation>since </translation>
    </message>
    <message>
        <source>dd.MM.yyyy HH:mm</source>
        <translation>yyyy-MM-dd HH:mm</translation>
    </message>
    <message>
        <source>    правит: %1, %2</source>
        <translation>    is editing: %1, %2</translation>
    </message>
    <message>
        <source>Правит </source>
        <translation>Being edited by </translation>
    </message>
    <message>
        <source> и ещё %1</source>
        <translation> and %1 more</translation>
    </message>
    <message>
        <source>сначала ответьте на вопрос: %1</source>
        <translation>answer the question first: %1</translation>
    </message>
    <message>
        <source>Показать нечего: строки больше нет.</source>
        <translation>Nothing to show: the row no longer exists.</translation>
    </message>
    <message>
        <source>Показать строку</source>
        <translation>Show row</translation>
    </message>
    <message>
        <source>Строка не показана: </source>
        <translation>The row was not shown: </translation>
    </message>
    <message>
        <source>Строка есть в хранилище, но в редакторе не видна.</source>
        <translation>The row is in the store but not visible in the editor.</translation>
    </message>
    <message>
        <source>&amp;Как на рабочем столе</source>
        <translation>&amp;As in the system</translation>
    </message>
    <message>
        <source>&amp;Светлые</source>
        <translation>&amp;Light</translation>
    </message>
    <message>
        <source>&amp;Тёмные</source>
        <translation>&amp;Dark</translation>
    </message>
    <message>
        <source>&amp;Цвета</source>
        <translation>&amp;Colors</translation>
    </message>
    <message>
        <source>%1 правка ждёт</source>
        <translation>%1 change waiting</translation>
    </message>
    <message>
        <source>%1 правки ждут</source>
        <translation>%1 changes waiting</translation>
    </message>
    <message>
        <source>%1 правок ждут</source>
        <translation>%1 changes waiting</translation>
    </message>
    <message>
        <source>Хранилище: %1</source>
        <translation>Store: %1</translation>
    </message>
    <message>
        <source>Пользователь: %1</source>
        <translation>User: %1</translation>
    </message>
    <message>
        <source>Только просмотр</source>
        <translation>View only</translation>
    </message>
    <message>
        <source>Связь с хранилищем</source>
        <translation>Connection to the store</translation>
    </message>
    <message>
        <source>Показать, что не так с установкой (F8)</source>
        <translation>Show what is wrong with the installation (F8)</translation>
    </message>
    <message>
        <source>Проблемы: %1, из них ошибок %2</source>
        <translation>Problems: %1, including errors: %2</translation>
    </message>
    <message>
        <source>Проблемы: %1</source>
        <translation>Problems: %1</translation>
    </message>
    <message>
        <source>Подключено</source>
        <translation>Connected</translation>
    </message>
    <message>
        <source>Нет связи с %1 с %2</source>
        <translation>No connection to %1 since %2</translation>
    </message>
    <message>
        <source>Копирование файлов: %1 из %2</source>
        <translation>Copying files: %1 of %2</translation>
    </message>
    <message>
        <source>Ещё здесь: %1</source>
        <translation>Also here: %1</translation>
    </message>
    <message>
        <source>Щёлкните или F12, чтобы прочесть и убрать. Все сообщения — в журнале.</source>
        <translation>Click or press F12 to read and dismiss. All messages are in the log.</translation>
    </message>
    <message>
        <source> (всего %1)</source>
        <translation> (%1 in all)</translation>
    </message>
    <message>
        <source>Ещё %1 — в журнале.</source>
        <translation>%1 more in the log.</translation>
    </message>
    <message>
        <source>Сообщение о сбое</source>
        <translation>Failure message</translation>
    </message>
    <message>
        <source>Esc, F12 или щелчок — убрать</source>
        <translation>Esc, F12 or a click dismisses it</translation>
    </message>
    <message>
        <source> (теперь наверху)</source>
        <translation> (now at the top level)</translation>
    </message>
    <message>
        <source> (папки больше нет)</source>
        <translation> (the folder no longer exists)</translation>
    </message>
    <message>
        <source> (теперь в «%1»)</source>
        <translation> (now in “%1”)</translation>
    </message>
    <message>
        <source>Не на своём месте в дереве ресурсов: </source>
        <translation>Out of place in the resource tree: </translation>
    </message>
    <message>
        <source>Не видно в дереве ресурсов: </source>
        <translation>Not visible in the resource tree: </translation>
    </message>
    <message>
        <source>На место ставит «Открыть модули заново» (Ctrl+R)</source>
        <translation>“Reopen the modules” (Ctrl+R) puts everything in its place</translation>
    </message>
    <message>
        <source>Место дают «Проблемы» (F8)</source>
        <translation>“Problems” (F8) finds a place for it</translation>
    </message>
    <message>
        <source>Исход неизвестен</source>
        <translation>Outcome unknown</translation>
    </message>
    <message>
        <source>Записи больше нет</source>
        <translation>Record no longer exists</translation>
    </message>
    <message>
        <source>Изменил и другой</source>
        <translation>Also changed by another user</translation>
    </message>
    <message>
        <source>Потеряно сервером</source>
        <translation>Lost by the server</translation>
    </message>
    <message>
        <source>Ждёт очереди</source>
        <translation>Waiting its turn</translation>
    </message>
    <message>
        <source>Отказано</source>
        <translation>Refused</translation>
    </message>
    <message>
        <source>Что не записано</source>
        <translation>What was not written</translation>
    </message>
    <message>
        <source>Где (поле: было)</source>
        <translation>Where (field: before)</translation>
    </message>
    <message>
        <source>Почему (поле: набрано)</source>
        <translation>Why (field: typed)</translation>
    </message>
    <message>
        <source>Когда (поле: у другого)</source>
        <translation>When (field: other user&apos;s)</translation>
    </message>
    <message>
        <source>в хранилище: </source>
        <translation>in the store: </translation>
    </message>
    <message>
        <source>Взять моё</source>
        <translation>Take mine</translation>
    </message>
    <message>
        <source>Создать заново</source>
        <translation>Create again</translation>
    </message>
    <message>
        <source>Повторить</source>
        <translation>Redo</translation>
    </message>
    <message>
        <source>Взять чужое</source>
        <translation>Take theirs</translation>
    </message>
    <message>
        <source>Отказаться</source>
        <translation>Discard</translation>
    </message>
    <message>
        <source>Не ждать</source>
        <translation>Do not wait</translation>
    </message>
    <message>
        <source>Orvo — ожидание сервера</source>
        <translation>Orvo — waiting for the server</translation>
    </message>
    <message>
        <source>&lt;b&gt;Хранилище не отвечает&lt;/b&gt;</source>
        <translation>&lt;b&gt;The store is not responding&lt;/b&gt;</translation>
    </message>
    <message>
        <source>Прервать операцию (Esc)</source>
        <translation>Stop the operation (Esc)</translation>
    </message>
    <message>
        <source>Ожидание: %1 с</source>
        <translation>Waiting: %1 s</translation>
    </message>
    <message>
        <source>Прерывается…</source>
        <translation>Stopping…</translation>
    </message>
    <message>
        <source>Ни одна библиотека модулей не умеет показывать рабочий стол.</source>
        <translation>No module library can show a desktop.</translation>
    </message>
    <message>
        <source>Показать рабочий стол нечем.</source>
        <translation>There is nothing here to show the desktop with.</translation>
    </message>
    <message>
        <source>Закрыть рабочий стол</source>
        <translation>Close desktop</translation>
    </message>
    <message>
        <source>Имя пользователя (вход):</source>
        <translation>User name (login):</translation>
    </message>
    <message>
        <source>Это имя другого пользователя.</source>
        <translation>This is the name of another user.</translation>
    </message>
    <message>
        <source>Название</source>
        <translation>Title</translation>
    </message>
    <message>
        <source>Объект</source>
        <translation>Object</translation>
    </message>
    <message>
        <source>Что это</source>
        <translation>What it is</translation>
    </message>
    <message>
        <source>Где</source>
        <translation>Where</translation>
    </message>
    <message>
        <source>Найти всё</source>
        <translation>Find everything</translation>
    </message>
    <message>
        <source>Что найти</source>
        <translation>What to find</translation>
    </message>
    <message>
        <source>Слова из названия, объекта, параметров, ключа или пути</source>
        <translation>Words from the title, object, parameters, key or path</translation>
    </message>
    <message>
        <source>Найденное</source>
        <translation>Results</translation>
    </message>
    <message>
        <source>Записи не прочитаны: %1</source>
        <translation>The records were not read: %1</translation>
    </message>
    <message>
        <source>Записи читаются…</source>
        <translation>Reading records…</translation>
    </message>
    <message>
        <source>Рабочие столы, элементы меню, ресурсы, файлы и люди. Слова в любом порядке.</source>
        <translation>Desktops, menu items, resources, files and people. Words in any order.</translation>
    </message>
    <message>
        <source>Выбранной строки среди найденного больше нет. Найдено %1.</source>
        <translation>The selected row is no longer among the results. %1 found.</translation>
    </message>
    <message>
        <source>Найдено %1, поиск идёт…</source>
        <translation>%1 found, searching…</translation>
    </message>
    <message>
        <source>Ничего не найдено.</source>
        <translation>Nothing found.</translation>
    </message>
    <message>
        <source>Найдено %1, показаны первые %2: уточните слова.</source>
        <translation>%1 found, the first %2 shown: use more specific words.</translation>
    </message>
    <message>
        <source>Найдено %1.</source>
        <translation>%1 found.</translation>
    </message>
    <message>
        <source> Искались первые %1 слов.</source>
        <translation> Only the first %1 words were searched for.</translation>
    </message>
    <message>
        <source>&amp;Где используется</source>
        <translation>&amp;Where used</translation>
    </message>
    <message>
        <source>Показать</source>
        <translation>Show</translation>
    </message>
    <message>
        <source>Выберите «Где используется» в контекстном меню ресурса, формы, файла или элемента меню.</source>
        <translation>Choose “Where used” in the context menu of a resource, form, file or menu item.</translation>
    </message>
    <message>
        <source>Открыть редактор на этой строке (Enter)</source>
        <translation>Open the editor at this row (Enter)</translation>
    </message>
    <message>
        <source>запись</source>
        <translation>record</translation>
    </message>
    <message>
        <source> — записи больше нет</source>
        <translation> — the record no longer exists</translation>
    </message>
    <message>
        <source>; показаны первые %1</source>
        <translation>; the first %1 shown</translation>
    </message>
    <message>
        <source>Ресурсы</source>
        <translation>Resources</translation>
    </message>
    <message>
        <source>&amp;История</source>
        <translation>&amp;History</translation>
    </message>
    <message>
        <source>История</source>
        <translation>History</translation>
    </message>
    <message>
        <source>сначала закончите начатое</source>
        <translation>finish first what you have started</translation>
    </message>
    <message>
        <source>Правка</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>(вручную)</source>
        <translation>(by hand)</translation>
    </message>
    <message>
        <source>Журнал изменений этого уже не помнит</source>
        <translation>No longer kept in the change log</translation>
    </message>
    <message>
        <source>Журнал изменений этого действия уже не помнит</source>
        <translation>The change log no longer keeps this action</translation>
    </message>
    <message>
        <source>Значения не изменились</source>
        <translation>The values did not change</translation>
    </message>
    <message>
        <source>… и другие: показаны первые %1</source>
        <translation>… and others: the first %1 shown</translation>
    </message>
    <message>
        <source>Журнал изменений начинается %1: более раннее очищено.</source>
        <translation>The change log begins at %1: earlier entries were cleared.</translation>
    </message>
    <message>
        <source>Таких действий нет.</source>
        <translation>There are no such actions.</translation>
    </message>
    <message>
        <source>Ищется дальше…</source>
        <translation>Still searching…</translation>
    </message>
    <message>
        <source>за всё время</source>
        <translation>all time</translation>
    </message>
    <message>
        <source>за час</source>
        <translation>past hour</translation>
    </message>
    <message>
        <source>за сутки</source>
        <translation>past 24 hours</translation>
    </message>
    <message>
        <source>за неделю</source>
        <translation>past week</translation>
    </message>
    <message>
        <source>за месяц</source>
        <translation>past month</translation>
    </message>
    <message>
        <source>с…</source>
        <translation>since…</translation>
    </message>
    <message>
        <source>Кто изменил</source>
        <translation>Changed by</translation>
    </message>
    <message>
        <source>За какое время</source>
        <translation>Period</translation>
    </message>
    <message>
        <source>С какого времени</source>
        <translation>Since what time</translation>
    </message>
    <message>
        <source>Поиск в истории</source>
        <translation>Search the history</translation>
    </message>
    <message>
        <source>О чём история</source>
        <translation>What the history is about</translation>
    </message>
    <message>
        <source>Текст в названии или значении</source>
        <translation>Text in a title or value</translation>
    </message>
    <message>
        <source>Показать историю всех строк</source>
        <translation>Show the history of all rows</translation>
    </message>
    <message>
        <source>Внутри</source>
        <translation>Inside</translation>
    </message>
    <message>
        <source>Строка</source>
        <translation>Row</translation>
    </message>
    <message>
        <source>все</source>
        <translation>everyone</translation>
    </message>
    <message>
        <source>только я</source>
        <translation>only me</translation>
    </message>
    <message>
        <source>dd.MM.yyyy HH:mm:ss</source>
        <translation>yyyy-MM-dd HH:mm:ss</translation>
    </message>
    <message>
        <source>Отменено</source>
        <translation>Undone</translation>
    </message>
    <message>
        <source>Когда</source>
        <translation>When</translation>
    </message>
    <message>
        <source>Кто</source>
        <translation>Who</translation>
    </message>
    <message>
        <source>Что сделано</source>
        <translation>What was done</translation>
    </message>
    <message>
        <source>Было</source>
        <translation>Before</translation>
    </message>
    <message>
        <source>Стало</source>
        <translation>After</translation>
    </message>
    <message>
        <source>История изменений</source>
        <translation>Change history</translation>
    </message>
    <message>
        <source>История не прочитана: %1</source>
        <translation>The history was not read: %1</translation>
    </message>
    <message>
        <source>Открыть редактор на этой записи (Enter)</source>
        <translation>Open the editor at this record (Enter)</translation>
    </message>
    <message>
        <source>Вернуть эту правку…</source>
        <translation>Revert this edit…</translation>
    </message>
    <message>
        <source>Вернуть всё до этого места</source>
        <translation>Revert everything back to here</translation>
    </message>
    <message>
        <source>Вернуть эту правку: %1</source>
        <translation>Revert this edit: %1</translation>
    </message>
    <message>
        <source>Возвращено: %1</source>
        <translation>Reverted: %1</translation>
    </message>
    <message>
        <source>Вернуть всё с %1, %2</source>
        <translation>Revert everything since %1, %2</translation>
    </message>
    <message>
        <source>Возвращено всё с %1, %2</source>
        <translation>Reverted everything since %1, %2</translation>
    </message>
    <message>
        <source>этой строки</source>
        <translation>for this row</translation>
    </message>
    <message>
        <source>этой строки и всего внутри неё</source>
        <translation>for this row and everything inside it</translation>
    </message>
    <message>
        <source>всего рабочего стола</source>
        <translation>for the whole desktop</translation>
    </message>
    <message>
        <source>того же человека: %1</source>
        <translation>by the same person: %1</translation>
    </message>
    <message>
        <source>по нынешнему отбору</source>
        <translation>within the current filter</translation>
    </message>
    <message>
        <source>История этой строки</source>
        <translation>History of this row</translation>
    </message>
    <message>
        <source>История этого рабочего стола</source>
        <translation>History of this desktop</translation>
    </message>
    <message>
        <source>Что заблокировано автором правки (%1)</source>
        <translation>What the author of the edit has locked (%1)</translation>
    </message>
    <message>
        <source>Только этот человек</source>
        <translation>Only this person</translation>
    </message>
    <message>
        <source>Удалить и это, вместе с тем, что построили другие</source>
        <translation>Delete this too, together with what others have built</translation>
    </message>
    <message>
        <source>Удалить или перенести назад и это, вместе с тем, что сделали другие</source>
        <translation>Delete or move back this too, together with what others have done</translation>
    </message>
    <message>
        <source>Перенести назад и это, вместе с тем, что изменили другие</source>
        <translation>Move back this too, together with what others have changed</translation>
    </message>
    <message>
        <source>Готовится…</source>
        <translation>Preparing…</translation>
    </message>
    <message>
        <source>Останется как есть:</source>
        <translation>Stays as it is:</translation>
    </message>
    <message>
        <source>Вернуть под свободным именем то, чьё имя уже занято: «Имя (2)»</source>
        <translation>Restore under a free name whatever had a name that is now taken: “Name (2)”</translation>
    </message>
    <message>
        <source>Вернуть</source>
        <translation>Revert</translation>
    </message>
    <message>
        <source>Что</source>
        <translation>What</translation>
    </message>
    <message>
        <source>Сейчас</source>
        <translation>Now</translation>
    </message>
    <message>
        <source>Станет</source>
        <translation>Will be</translation>
    </message>
    <message>
        <source>Что изменится</source>
        <translation>What will change</translation>
    </message>
    <message>
        <source>Останется как есть</source>
        <translation>Stays as it is</translation>
    </message>
    <message>
        <source>Ничего не делать</source>
        <translation>Do nothing</translation>
    </message>
    <message>
        <source>Куда вернуть</source>
        <translation>Where to restore</translation>
    </message>
    <message>
        <source>не возвращать</source>
        <translation>do not restore</translation>
    </message>
    <message>
        <source>на верхний уровень</source>
        <translation>to the top level</translation>
    </message>
    <message>
        <source>. Куда вернуть?</source>
        <translation>. Where should it be restored?</translation>
    </message>
    <message>
        <source>Записывать нечего.</source>
        <translation>Nothing to write.</translation>
    </message>
    <message>
        <source>Будет записано одним действием: %1 %2.</source>
        <translation>%1 %2 will be written as one action.</translation>
    </message>
    <message>
        <source>записи</source>
        <translation>records</translation>
    </message>
    <message>
        <source>записей</source>
        <translation>records</translation>
    </message>
    <message>
        <source>прежняя отмена ещё не закончена</source>
        <translation>the previous undo is not finished yet</translation>
    </message>
    <message>
        <source>сначала ответьте на вопрос</source>
        <translation>answer the question first</translation>
    </message>
    <message>
        <source>Пока вы решали, записано другое: %1. Посмотрите ещё раз, что будет записано.</source>
        <translation>Something else was written while you were deciding: %1. Look again at what will be written.</translation>
    </message>
    <message>
        <source>%1: возвращать нечего.</source>
        <translation>%1: nothing to revert.</translation>
    </message>
    <message>
        <source>%1: возвращать нечего. %2.</source>
        <translation>%1: nothing to revert. %2.</translation>
    </message>
    <message>
        <source>Не возвращено ещё %1: смотрите историю.</source>
        <translation>%1 more not reverted: see the history.</translation>
    </message>
    <message>
        <source>Отмена: история не прочитана: %1</source>
        <translation>Undo: the history was not read: %1</translation>
    </message>
    <message>
        <source>Отменить</source>
        <translation>Undo</translation>
    </message>
    <message>
        <source>Повторять нечего.</source>
        <translation>Nothing to redo.</translation>
    </message>
    <message>
        <source>Отменять нечего.</source>
        <translation>Nothing to undo.</translation>
    </message>
    <message>
        <source>Повторено</source>
        <translation>Redone</translation>
    </message>
    <message>
        <source>Оставлено</source>
        <translation>Kept</translation>
    </message>
    <message>
        <source>. Дальше отменяется то, что было раньше; к этому вернёт история.</source>
        <translation>. Undo goes on with what came before it; the history can still revert this one.</translation>
    </message>
    <message>
        <source>байт</source>
        <translation>B</translation>
    </message>
    <message>
        <source>байта</source>
        <translation>B</translation>
    </message>
    <message>
        <source>КиБ</source>
        <translation>KiB</translation>
    </message>
    <message>
        <source>МиБ</source>
        <translation>MiB</translation>
    </message>
    <message>
        <source>ГиБ</source>
        <translation>GiB</translation>
    </message>
    <message>
        <source>Читается…</source>
        <translation>Reading…</translation>
    </message>
    <message>
        <source>Прежние версии</source>
        <translation>Earlier versions</translation>
    </message>
    <message>
        <source>Файл</source>
        <translation>File</translation>
    </message>
    <message>
        <source>Дата файла</source>
        <translation>File date</translation>
    </message>
    <message>
        <source>Размер</source>
        <translation>Size</translation>
    </message>
    <message>
        <source>Заменена или удалена</source>
        <translation>Replaced or deleted</translation>
    </message>
    <message>
        <source>Кем</source>
        <translation>By</translation>
    </message>
    <message>
        <source>Извлечь…</source>
        <translation>Extract…</translation>
    </message>
    <message>
        <source>Прежние версии: %1</source>
        <translation>Earlier versions: %1</translation>
    </message>
    <message>
        <source>Прежних версий нет.</source>
        <translation>There are no earlier versions.</translation>
    </message>
    <message>
        <source>Не открыто: больше %1, можно извлечь.</source>
        <translation>Not opened: larger than %1, but it can be extracted.</translation>
    </message>
    <message>
        <source>Куда извлечь</source>
        <translation>Extract to</translation>
    </message>
    <message>
        <source>Не извлечено: «%1» не может быть именем файла.</source>
        <translation>Not extracted: “%1” cannot be a file name.</translation>
    </message>
    <message>
        <source>Не извлечено: %1 уже есть.</source>
        <translation>Not extracted: %1 already exists.</translation>
    </message>
    <message>
        <source>Извлечено: %1</source>
        <translation>Extracted: %1</translation>
    </message>
    <message>
        <source>Не извлечено: %1</source>
        <translation>Not extracted: %1</translation>
    </message>
    <message>
        <source>Версия файла «%1» от %2</source>
        <translation>The version of file “%1” from %2</translation>
    </message>
    <message>
        <source>Версия файла «%1», заменённая %2,</source>
        <translation>The version of file “%1”, replaced %2,</translation>
    </message>
    <message>
        <source> возвращена.</source>
        <translation> was restored.</translation>
    </message>
    <message>
        <source>Хранилища на этой машине ещё нет. С чего начать?</source>
        <translation>There is no store on this machine yet. How do you want to start?</translation>
    </message>
    <message>
        <source>Окна показать нельзя (дисплей «%1»): %2</source>
        <translation>Windows cannot be shown (display “%1”): %2</translation>
    </message>
    <message>
        <source>дерево ресурсов</source>
        <translation>resource tree</translation>
    </message>
    <message>
        <source>Исправление прерывается…</source>
        <translation>Stopping the fix…</translation>
    </message>
    <message>
        <source>Исправление готовится: %1 из %2…</source>
        <translation>Preparing fixes: %1 of %2…</translation>
    </message>
    <message>
        <source>Исправления записываются: %1…</source>
        <translation>Writing fixes: %1…</translation>
    </message>
    <message>
        <source>Исправление прервано, ничего не записано.</source>
        <translation>The fix was stopped, nothing was written.</translation>
    </message>
    <message>
        <source>Исправление прервано: %1.</source>
        <translation>The fix was stopped: %1.</translation>
    </message>
    <message>
        <source>Не исправлено: тем временем эти записи изменил другой. Посмотрите, что осталось.</source>
        <translation>Not fixed: another user changed these records in the meantime. See what is left.</translation>
    </message>
    <message>
        <source>Не исправлено: %1</source>
        <translation>Not fixed: %1</translation>
    </message>
    <message>
        <source>Исправлено: %1</source>
        <translation>Fixed: %1</translation>
    </message>
    <message>
        <source>Исправлено: %1. Отменяет Ctrl+Z.</source>
        <translation>Fixed: %1. Ctrl+Z undoes it.</translation>
    </message>
    <message>
        <source>Исправить: %1</source>
        <translation>Fix: %1</translation>
    </message>
    <message>
        <source>Уже исправлено без вас: %1.</source>
        <translation>Already fixed without you: %1.</translation>
    </message>
    <message>
        <source>Однозначно не исправляется, решать вам: %1.</source>
        <translation>No single way to fix, yours to decide: %1.</translation>
    </message>
    <message>
        <source>Замечание</source>
        <translation>Warning</translation>
    </message>
    <message>
        <source>Запись</source>
        <translation>Writing</translation>
    </message>
    <message>
        <source>Что не так</source>
        <translation>What is wrong</translation>
    </message>
    <message>
        <source>Исправление</source>
        <translation>Fix</translation>
    </message>
    <message>
        <source>Исправить</source>
        <translation>Fix</translation>
    </message>
    <message>
        <source>Прервать</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Какие проблемы показать</source>
        <translation>Which problems to show</translation>
    </message>
    <message>
        <source>ошибки и замечания</source>
        <translation>errors and warnings</translation>
    </message>
    <message>
        <source>только ошибки</source>
        <translation>only errors</translation>
    </message>
    <message>
        <source>Исправить выделенное там, где исправление однозначно (Ctrl+Enter); отменяет Ctrl+Z</source>
        <translation>Fix what is selected where there is only one way to fix it (Ctrl+Enter); Ctrl+Z undoes it</translation>
    </message>
    <message>
        <source>Бросить исправление: не будет записано ничего</source>
        <translation>Stop fixing: nothing will be written</translation>
    </message>
    <message>
        <source>Найти среди проблем</source>
        <translation>Search the problems</translation>
    </message>
    <message>
        <source>Установка проверяется…</source>
        <translation>Checking the installation…</translation>
    </message>
    <message>
        <source>Проблем нет.</source>
        <translation>No problems.</translation>
    </message>
    <message>
        <source>%1Ошибок: %2, замечаний: %3</source>
        <translation>%1Errors: %2, warnings: %3</translation>
    </message>
    <message>
        <source>Не показано ни одной. </source>
        <translation>None are shown. </translation>
    </message>
    <message>
        <source>Пароль с переводом строки в файл %1 не записать.</source>
        <translation>A password with a line break cannot be written to file %1.</translation>
    </message>
    <message>
        <source>Файл паролей %1 не прочитан: %2</source>
        <translation>Password file %1 was not read: %2</translation>
    </message>
    <message>
        <source>Пароль не записан в %1: %2</source>
        <translation>The password was not written to %1: %2</translation>
    </message>
    <message>
        <source>Хранилище паролей рабочего стола не открыто.</source>
        <translation>The system keyring was not opened.</translation>
    </message>
    <message>
        <source>Хранилища паролей в этом сеансе нет.</source>
        <translation>There is no keyring in this session.</translation>
    </message>
    <message>
        <source>Хранилище паролей рабочего стола не приняло пароль: %1</source>
        <translation>The system keyring did not accept the password: %1</translation>
    </message>
    <message>
        <source>Это не адрес сервера: %1</source>
        <translation>This is not a server address: %1</translation>
    </message>
    <message>
        <source>Хранилище на сервере</source>
        <translation>Store on a server</translation>
    </message>
    <message>
        <source>Имя или адрес; несколько, через запятую: подходит первый, который принимает запись</source>
        <translation>Name or address; several, separated by commas: the first one that accepts writes is used</translation>
    </message>
    <message>
        <source>до конца работы</source>
        <translation>until the program exits</translation>
    </message>
    <message>
        <source>в хранилище паролей рабочего стола</source>
        <translation>in the system keyring</translation>
    </message>
    <message>
        <source>в файле %1</source>
        <translation>in file %1</translation>
    </message>
    <message>
        <source>&amp;Сервер:</source>
        <translation>&amp;Server:</translation>
    </message>
    <message>
        <source>По&amp;рт:</source>
        <translation>Por&amp;t:</translation>
    </message>
    <message>
        <source>&amp;База данных:</source>
        <translation>&amp;Database:</translation>
    </message>
    <message>
        <source>&amp;Пользователь:</source>
        <translation>&amp;User:</translation>
    </message>
    <message>
        <source>П&amp;ароль:</source>
        <translation>&amp;Password:</translation>
    </message>
    <message>
        <source>&amp;Запомнить:</source>
        <translation>&amp;Remember:</translation>
    </message>
    <message>
        <source>Проверит&amp;ь</source>
        <translation>T&amp;est</translation>
    </message>
    <message>
        <source>&amp;Открыть</source>
        <translation>&amp;Open</translation>
    </message>
    <message>
        <source>Проверяется…</source>
        <translation>Checking…</translation>
    </message>
    <message>
        <source>Хранилище открыто: пользователь %1 может читать и писать.</source>
        <translation>The store was opened: user %1 may read and write.</translation>
    </message>
    <message>
        <source>Хранилище открыто: пользователь %1 может только читать.</source>
        <translation>The store was opened: user %1 may only read.</translation>
    </message>
    <message>
        <source>Программа %1 не запущена: %2</source>
        <translation>Program %1 was not started: %2</translation>
    </message>
    <message>
        <source>Хранилище не сделано: команда %1 %2 прервана.</source>
        <translation>The store was not created: command %1 %2 was interrupted.</translation>
    </message>
    <message>
        <source>Рядом с клиентом нет команды orvo-admin, которая делает хранилища: установите пакет orvo-admin.</source>
        <translation>The orvo-admin command, which creates stores, is not next to the client: install the orvo-admin package.</translation>
    </message>
    <message>
        <source>Каталог %1 не создан.</source>
        <translation>Directory %1 was not created.</translation>
    </message>
    <message>
        <source>Orvo: какое хранилище открыть</source>
        <translation>Orvo: which store to open</translation>
    </message>
    <message>
        <source>&amp;Недавние</source>
        <translation>&amp;Recent</translation>
    </message>
    <message>
        <source>Недавние хранилища</source>
        <translation>Recent stores</translation>
    </message>
    <message>
        <source>Убрать из списка</source>
        <translation>Remove from the list</translation>
    </message>
    <message>
        <source>Хранилище на этой машине</source>
        <translation>Store on this machine</translation>
    </message>
    <message>
        <source>Попробовать на примере</source>
        <translation>Try it with sample data</translation>
    </message>
    <message>
        <source>Сделать хранилище на этой машине и наполнить его вымышленной установкой: %1</source>
        <translation>Create a store on this machine and fill it with a fictional installation: %1</translation>
    </message>
    <message>
        <source>Начать с пустого</source>
        <translation>Start with an empty store</translation>
    </message>
    <message>
        <source>Сделать хранилище на этой машине: %1</source>
        <translation>Create a store on this machine: %1</translation>
    </message>
    <message>
        <source>Подключиться к серверу…</source>
        <translation>Connect to a server…</translation>
    </message>
    <message>
        <source>База PostgreSQL, в которой работают с нескольких машин</source>
        <translation>A PostgreSQL database used from several machines</translation>
    </message>
    <message>
        <source>Открыть файл…</source>
        <translation>Open file…</translation>
    </message>
    <message>
        <source>Хранилище SQLite в другом месте</source>
        <translation>An SQLite store in another place</translation>
    </message>
    <message>
        <source>Попробовать ещё раз</source>
        <translation>Try again</translation>
    </message>
    <message>
        <source> (файла нет)</source>
        <translation> (file not found)</translation>
    </message>
    <message>
        <source>Хранилище делается и наполняется примером…</source>
        <translation>Creating the store and filling it with sample data…</translation>
    </message>
    <message>
        <source>Хранилище делается…</source>
        <translation>Creating the store…</translation>
    </message>
    <message>
        <source>Файл хранилища</source>
        <translation>Store file</translation>
    </message>
    <message>
        <source>Хранилища (*.db);;Все файлы (*)</source>
        <translation>Stores (*.db);;All files (*)</translation>
    </message>
    <message>
        <source>Рабочий стол не открыт</source>
        <translation>The desktop was not opened</translation>
    </message>
    <message>
        <source>Показано не всё: %1.</source>
        <translation>Not everything is shown: %1.</translation>
    </message>
    <message>
        <source>рисунок %1 × %2 слишком велик</source>
        <translation>picture %1 × %2 is too large</translation>
    </message>
    <message>
        <source>файл слишком велик</source>
        <translation>the file is too large</translation>
    </message>
    <message>
        <source>Двоичный файл, %1 байт

</source>
        <translation>Binary file, %1 bytes

</translation>
    </message>
    <message>
        <source>
… показано только начало</source>
        <translation>
… only the beginning is shown</translation>
    </message>
    <message>
        <source>Файл «%1» повреждён и показан как есть: %2</source>
        <translation>File “%1” is damaged and shown as it is: %2</translation>
    </message>
    <message>
        <source>ошибка в строке %1: %2</source>
        <translation>error on line %1: %2</translation>
    </message>
    <message>
        <source>%1 больше %2</source>
        <translation>%1 exceeds %2</translation>
    </message>
    <message>
        <source>форма с объявлением типа документа</source>
        <translation>form with a document type declaration</translation>
    </message>
    <message>
        <source>это не форма</source>
        <translation>this is not a form</translation>
    </message>
    <message>
        <source>вложенность</source>
        <translation>nesting</translation>
    </message>
    <message>
        <source>число элементов</source>
        <translation>number of elements</translation>
    </message>
    <message>
        <source>число виджетов</source>
        <translation>number of widgets</translation>
    </message>
    <message>
        <source>вложенность виджетов</source>
        <translation>nesting of widgets</translation>
    </message>
    <message>
        <source>число строк и ячеек</source>
        <translation>number of rows and cells</translation>
    </message>
    <message>
        <source>число строк таблиц</source>
        <translation>number of table rows</translation>
    </message>
    <message>
        <source>число столбцов таблиц</source>
        <translation>number of table columns</translation>
    </message>
    <message>
        <source>число связей</source>
        <translation>number of connections</translation>
    </message>
    <message>
        <source>длина атрибута</source>
        <translation>length of an attribute</translation>
    </message>
    <message>
        <source>объём текста</source>
        <translation>amount of text</translation>
    </message>
    <message>
        <source>и другое</source>
        <translation>and more</translation>
    </message>
    <message>
        <source>место в сетке за пределом %1</source>
        <translation>grid position beyond the limit of %1</translation>
    </message>
    <message>
        <source>слишком сложное свойство</source>
        <translation>overly complex property</translation>
    </message>
    <message>
        <source>связь со слотом «%1»</source>
        <translation>connection to slot “%1”</translation>
    </message>
    <message>
        <source>виджет неизвестного класса «%1»</source>
        <translation>widget of unknown class “%1”</translation>
    </message>
    <message>
        <source>форма больше %1 МиБ</source>
        <translation>the form is larger than %1 MiB</translation>
    </message>
    <message>
        <source>свойство «%1»</source>
        <translation>property “%1”</translation>
    </message>
    <message>
        <source>рисунок «%1»: его нет среди файлов формы, или он велик</source>
        <translation>picture “%1”: it is not among the files of the form, or it is too large</translation>
    </message>
    <message>
        <source>адрес в свойстве «%1»</source>
        <translation>address in property “%1”</translation>
    </message>
    <message>
        <source>чрезмерное значение свойства «%1»</source>
        <translation>excessive value of property “%1”</translation>
    </message>
    <message>
        <source>конец длинного текста</source>
        <translation>end of a long text</translation>
    </message>
    <message>
        <source>таблица стилей, которая ссылается на другие файлы или чрезмерна</source>
        <translation>style sheet that refers to other files or is excessive</translation>
    </message>
    <message>
        <source>разметка текста, которая ссылается на другие файлы или чрезмерна</source>
        <translation>text markup that refers to other files or is excessive</translation>
    </message>
    <message>
        <source>это не PDF</source>
        <translation>this is not a PDF</translation>
    </message>
    <message>
        <source>PDF закрыт паролем</source>
        <translation>the PDF is locked with a password</translation>
    </message>
    <message>
        <source>в PDF нет страниц</source>
        <translation>the PDF has no pages</translation>
    </message>
    <message>
        <source>иконка %1</source>
        <translation>icon %1</translation>
    </message>
    <message>
        <source>элемент</source>
        <translation>item</translation>
    </message>
    <message>
        <source>элемента</source>
        <translation>items</translation>
    </message>
    <message>
        <source>элементов</source>
        <translation>items</translation>
    </message>
    <message>
        <source>ресурс</source>
        <translation>resource</translation>
    </message>
    <message>
        <source>ресурса</source>
        <translation>resources</translation>
    </message>
    <message>
        <source>ресурсов</source>
        <translation>resources</translation>
    </message>
    <message>
        <source>не используется</source>
        <translation>not used</translation>
    </message>
    <message>
        <source>ничего не заблокировано</source>
        <translation>nothing is locked</translation>
    </message>
    <message>
        <source>заблокирован</source>
        <translation>has locked</translation>
    </message>
    <message>
        <source>заблокировано</source>
        <translation>has locked</translation>
    </message>
    <message>
        <source>нигде не используется</source>
        <translation>not used anywhere</translation>
    </message>
    <message>
        <source>элемент меню</source>
        <translation>menu item</translation>
    </message>
    <message>
        <source>элемента меню</source>
        <translation>menu items</translation>
    </message>
    <message>
        <source>элементов меню</source>
        <translation>menu items</translation>
    </message>
    <message>
        <source> на </source>
        <translation> on </translation>
    </message>
    <message>
        <source>рабочем столе</source>
        <translation>desktop</translation>
    </message>
    <message>
        <source>рабочих столах</source>
        <translation>desktops</translation>
    </message>
    <message>
        <source>перенести на верхний уровень</source>
        <translation>move to the top level</translation>
    </message>
    <message>
        <source>перенести в папку %1</source>
        <translation>move to folder %1</translation>
    </message>
    <message>
        <source>дать соседним элементам разные места, сохранив порядок</source>
        <translation>give neighboring items different places, keeping their order</translation>
    </message>
    <message>
        <source>записать порядок «1000», как у папки</source>
        <translation>write order “1000”, as for a folder</translation>
    </message>
    <message>
        <source>записать порядок «2000», как у рабочего стола</source>
        <translation>write order “2000”, as for a desktop</translation>
    </message>
    <message>
        <source>записать ключ рабочего стола так, как он есть</source>
        <translation>write the desktop key as the desktop has it</translation>
    </message>
    <message>
        <source>убрать значок</source>
        <translation>remove the icon</translation>
    </message>
    <message>
        <source>снять блокировку</source>
        <translation>unlock</translation>
    </message>
    <message>
        <source>пустое имя входа</source>
        <translation>empty login name</translation>
    </message>
    <message>
        <source>имя входа уже есть у другого пользователя</source>
        <translation>another user already has this login name</translation>
    </message>
    <message>
        <source>пустое расширение</source>
        <translation>empty extension</translation>
    </message>
    <message>
        <source>расширение повторяется</source>
        <translation>duplicate extension</translation>
    </message>
    <message>
        <source>пустое название</source>
        <translation>empty title</translation>
    </message>
    <message>
        <source>нет родителя</source>
        <translation>no parent</translation>
    </message>
    <message>
        <source>круг: стоит внутри самой себя; записей в круге:</source>
        <translation>loop: stands inside itself; records in the loop:</translation>
    </message>
    <message>
        <source>такой ключ у строки дерева, за которой нет записи; редактор принимает одну за другую</source>
        <translation>a tree row without a record has this key; the editor takes one for the other</translation>
    </message>
    <message>
        <source>неизвестный тип</source>
        <translation>unknown type</translation>
    </message>
    <message>
        <source>порядок не &quot;1000&quot; (папка) и не &quot;2000&quot; (рабочий стол):</source>
        <translation>order is neither &quot;1000&quot; (folder) nor &quot;2000&quot; (desktop):</translation>
    </message>
    <message>
        <source>порядок не тот, у папки он &quot;1000&quot;, у рабочего стола &quot;2000&quot;:</source>
        <translation>wrong order, a folder has &quot;1000&quot;, a desktop &quot;2000&quot;:</translation>
    </message>
    <message>
        <source>родитель - рабочий стол, а не папка:</source>
        <translation>parent is a desktop, not a folder:</translation>
    </message>
    <message>
        <source>не сказано, на каком рабочем столе элемент</source>
        <translation>not stated which desktop the item is on</translation>
    </message>
    <message>
        <source>нет рабочего стола</source>
        <translation>no desktop</translation>
    </message>
    <message>
        <source>вместо рабочего стола папка столов:</source>
        <translation>a folder of desktops instead of a desktop:</translation>
    </message>
    <message>
        <source>ключ рабочего стола записан другими буквами:</source>
        <translation>desktop key is spelled in different letters:</translation>
    </message>
    <message>
        <source>родитель на другом рабочем столе:</source>
        <translation>parent is on another desktop:</translation>
    </message>
    <message>
        <source>родитель - не папка меню:</source>
        <translation>parent is not a menu folder:</translation>
    </message>
    <message>
        <source>нет ресурса</source>
        <translation>no resource</translation>
    </message>
    <message>
        <source>ресурс такого типа из меню не запускается:</source>
        <translation>a resource of this type is not launched from a menu:</translation>
    </message>
    <message>
        <source>в папке icons нет значка</source>
        <translation>the icons folder has no icon</translation>
    </message>
    <message>
        <source>место по порядку то же, что у соседнего элемента</source>
        <translation>same place in the order as the neighboring item</translation>
    </message>
    <message>
        <source>рядом есть папка с таким же названием</source>
        <translation>a folder next to it has the same title</translation>
    </message>
    <message>
        <source>название не годится в путь, на диск не переносится</source>
        <translation>title cannot be part of a path, not transferred to disk</translation>
    </message>
    <message>
        <source>сделана под верхней строкой дерева и после перезапуска редактора не видна:</source>
        <translation>made under the top row of the tree and not visible after the editor is restarted:</translation>
    </message>
    <message>
        <source>родитель другого типа:</source>
        <translation>parent is of another type:</translation>
    </message>
    <message>
        <source>нет верхней папки, без неё дерево ресурсов не загружается; её сделает init:</source>
        <translation>no top folder, without which the resource tree does not load; init makes it:</translation>
    </message>
    <message>
        <source>пустое имя ресурса</source>
        <translation>empty resource name</translation>
    </message>
    <message>
        <source>имя ресурса повторяется:</source>
        <translation>duplicate resource name:</translation>
    </message>
    <message>
        <source>ресурс вне папок, в дереве не виден</source>
        <translation>resource outside of folders, not visible in the tree</translation>
    </message>
    <message>
        <source>после перезапуска редактора не виден; папка</source>
        <translation>not visible after the editor is restarted; folder</translation>
    </message>
    <message>
        <source>нет папки</source>
        <translation>no folder</translation>
    </message>
    <message>
        <source>папки нет, форма стоит среди непривязанных объектов; папка</source>
        <translation>its folder is missing, the form stands among the unattached objects; folder</translation>
    </message>
    <message>
        <source>папка другого типа:</source>
        <translation>folder is of another type:</translation>
    </message>
    <message>
        <source>нет пользователя, который держит блокировку:</source>
        <translation>the user who holds the lock does not exist:</translation>
    </message>
    <message>
        <source>блокировка не на форме</source>
        <translation>lock on something other than a form</translation>
    </message>
    <message>
        <source>имя не годится для файла, на диск не переносится</source>
        <translation>name cannot be a file name, not transferred to disk</translation>
    </message>
    <message>
        <source>содержимого файла в хранилище нет:</source>
        <translation>file content is not in the store:</translation>
    </message>
    <message>
        <source>%1, тип %2</source>
        <translation>%1, type %2</translation>
    </message>
    <message>
        <source>; вместе с этим не видно записей: %1%2</source>
        <translation>; records not visible together with it: %1%2</translation>
    </message>
    <message>
        <source>не меньше </source>
        <translation>at least </translation>
    </message>
    <message>
        <source>(без названия)</source>
        <translation>(untitled)</translation>
    </message>
    <message>
        <source> (не сохранено)</source>
        <translation> (not saved)</translation>
    </message>
    <message>
        <source>Ресурс этого элемента удалён.</source>
        <translation>The resource of this item was deleted.</translation>
    </message>
    <message>
        <source>Ресурс этого элемента ещё не прочитан: нет связи.</source>
        <translation>The resource of this item is not read yet: no connection.</translation>
    </message>
    <message>
        <source>Не откроется: %1.</source>
        <translation>Will not open: %1.</translation>
    </message>
    <message>
        <source>Меню рабочего стола</source>
        <translation>Desktop menu</translation>
    </message>
    <message>
        <source>Свойства</source>
        <translation>Properties</translation>
    </message>
    <message>
        <source>Выбор иконок АРМ</source>
        <translation>Choose workstation icons</translation>
    </message>
    <message>
        <source>Выбрана папка &quot;%1&quot;, а нужно то, что в ней.</source>
        <translation>Folder &quot;%1&quot; is chosen, but something inside it is needed.</translation>
    </message>
    <message>
        <source>Панель инструментов</source>
        <translation>Toolbar</translation>
    </message>
    <message>
        <source>Ещё</source>
        <translation>More</translation>
    </message>
    <message>
        <source>Имя</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>%1: «%2» изменено другим, набранное «%3» не сохранено</source>
        <translation>%1: “%2” was changed by someone else, the typed “%3” was not saved</translation>
    </message>
    <message>
        <source>Где это используется, ещё выясняется…</source>
        <translation>Looking up where this is used…</translation>
    </message>
    <message>
        <source>В меню не используется.</source>
        <translation>Not used in any menu.</translation>
    </message>
    <message>
        <source>Используется: %1</source>
        <translation>Used by: %1</translation>
    </message>
    <message>
        <source>Операция на сервере не вернула результат.</source>
        <translation>The operation on the server returned no result.</translation>
    </message>
    <message>
        <source>Новая строка</source>
        <translation>New row</translation>
    </message>
    <message>
        <source>новый рабочий стол, модуль меню или ресурс того вида, что в папке</source>
        <translation>new desktop, menu module or resource of the kind that the folder holds</translation>
    </message>
    <message>
        <source>Новая папка</source>
        <translation>New folder</translation>
    </message>
    <message>
        <source>новая папка столов, меню или ресурсов</source>
        <translation>new folder of desktops, menu folder or resource folder</translation>
    </message>
    <message>
        <source>Новый модуль</source>
        <translation>New module</translation>
    </message>
    <message>
        <source>модули в меню, модуль в ресурсы</source>
        <translation>modules into the menu, a module into the resources</translation>
    </message>
    <message>
        <source>Новая функция</source>
        <translation>New function</translation>
    </message>
    <message>
        <source>функции в меню, функция в ресурсы</source>
        <translation>functions into the menu, a function into the resources</translation>
    </message>
    <message>
        <source>Новый файл</source>
        <translation>New file</translation>
    </message>
    <message>
        <source>формы в меню; загрузить файлы в ресурсы</source>
        <translation>forms into the menu; upload files into the resources</translation>
    </message>
    <message>
        <source>Переименовать</source>
        <translation>Rename</translation>
    </message>
    <message>
        <source>имя стола, наименование элемента и ресурса; в паспорте — значение строки</source>
        <translation>name of a desktop, an item or a resource; in the properties, the value of the row</translation>
    </message>
    <message>
        <source>Вырезать</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>вырезать выделенное</source>
        <translation>cut the selection</translation>
    </message>
    <message>
        <source>копировать выделенное</source>
        <translation>copy the selection</translation>
    </message>
    <message>
        <source>Вставить</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>вставить в текущую папку</source>
        <translation>paste into the current folder</translation>
    </message>
    <message>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>удалить текущую строку; новую, ещё не сохранённую, — без вопроса</source>
        <translation>delete the current row; a new one, not saved yet, without asking</translation>
    </message>
    <message>
        <source>Переместить вверх</source>
        <translation>Move up</translation>
    </message>
    <message>
        <source>поменять элемент с соседом выше</source>
        <translation>swap the item with its neighbor above</translation>
    </message>
    <message>
        <source>Переместить вниз</source>
        <translation>Move down</translation>
    </message>
    <message>
        <source>поменять элемент с соседом ниже</source>
        <translation>swap the item with its neighbor below</translation>
    </message>
    <message>
        <source>Внести в папку выше</source>
        <translation>Move into folder above</translation>
    </message>
    <message>
        <source>внести элемент в папку, которая стоит над ним</source>
        <translation>move the item into the folder that stands above it</translation>
    </message>
    <message>
        <source>Вынести из папки</source>
        <translation>Move out of folder</translation>
    </message>
    <message>
        <source>вынести элемент из папки и поставить за ней</source>
        <translation>move the item out of its folder and put it after the folder</translation>
    </message>
    <message>
        <source>Выбрать значение…</source>
        <translation>Choose value…</translation>
    </message>
    <message>
        <source>в паспорте: то же, что кнопка «...»</source>
        <translation>in the properties: same as the “...” button</translation>
    </message>
    <message>
        <source>Переключить флажок</source>
        <translation>Toggle check box</translation>
    </message>
    <message>
        <source>в паспорте: только пробел меняет флажок</source>
        <translation>in the properties: only Space changes a check box</translation>
    </message>
    <message>
        <source>Записать во все выделенные</source>
        <translation>Write to all selected</translation>
    </message>
    <message>
        <source>в паспорте: это значение во все выделенные строки</source>
        <translation>in the properties: this value into all selected rows</translation>
    </message>
    <message>
        <source>Извлечь файлы…</source>
        <translation>Extract files…</translation>
    </message>
    <message>
        <source>извлечь файлы выделенных форм и файлов</source>
        <translation>extract the files of the selected forms and files</translation>
    </message>
    <message>
        <source>Снять блокировку</source>
        <translation>Unlock</translation>
    </message>
    <message>
        <source>узнать, чем и кем форма заблокирована</source>
        <translation>find out what locks the form, and who</translation>
    </message>
    <message>
        <source>сохранить открытую правку</source>
        <translation>save the open edit</translation>
    </message>
    <message>
        <source>бросить открытую правку; из поля и из поиска — сначала назад к строкам</source>
        <translation>discard the open edit; from a field or the search, first go back to the rows</translation>
    </message>
    <message>
        <source>отменить последнее своё действие</source>
        <translation>undo your own last action</translation>
    </message>
    <message>
        <source>повторить отменённое</source>
        <translation>redo what was undone</translation>
    </message>
    <message>
        <source>Показать как оператору</source>
        <translation>Show as operator</translation>
    </message>
    <message>
        <source>меню текущего стола, каким его получит оператор</source>
        <translation>the menu of the current desktop as the operator will get it</translation>
    </message>
    <message>
        <source>Открыть схему</source>
        <translation>Open form</translation>
    </message>
    <message>
        <source>открыть текущую форму</source>
        <translation>open the current form</translation>
    </message>
    <message>
        <source>Выбор ресурсов рядом</source>
        <translation>Choose resources alongside</translation>
    </message>
    <message>
        <source>список ресурсов, который остаётся рядом с меню</source>
        <translation>the list of resources that stays beside the menu</translation>
    </message>
    <message>
        <source>открыть или закрыть историю изменений</source>
        <translation>open or close the change history</translation>
    </message>
    <message>
        <source>История строки</source>
        <translation>Row history</translation>
    </message>
    <message>
        <source>кто и когда менял текущую строку</source>
        <translation>who changed the current row, and when</translation>
    </message>
    <message>
        <source>История со всем, что внутри</source>
        <translation>History with everything inside</translation>
    </message>
    <message>
        <source>то же о строке и всём, что внутри неё</source>
        <translation>the same for the row and everything inside it</translation>
    </message>
    <message>
        <source>Прежние версии…</source>
        <translation>Earlier versions…</translation>
    </message>
    <message>
        <source>прежнее содержимое текущей формы или файла</source>
        <translation>earlier content of the current form or file</translation>
    </message>
    <message>
        <source>открыть или закрыть список того, что не так</source>
        <translation>open or close the list of what is wrong</translation>
    </message>
    <message>
        <source>открыть или закрыть список того, что не записано</source>
        <translation>open or close the list of what is not written</translation>
    </message>
    <message>
        <source>прочесть строку сбоя целиком; ещё раз или Esc — убрать</source>
        <translation>read the failure line in full; again, or Esc, to put it away</translation>
    </message>
    <message>
        <source>Рядом с вкладками</source>
        <translation>Beside the tabs</translation>
    </message>
    <message>
        <source>вынуть редактор или форму из вкладок и поставить рядом; ещё раз — вернуть</source>
        <translation>take the editor or form out of the tabs and put it beside them; again to put it back</translation>
    </message>
    <message>
        <source>В отдельном окне</source>
        <translation>In its own window</translation>
    </message>
    <message>
        <source>то же в своём окне, например на втором мониторе; ещё раз — вернуть</source>
        <translation>the same in a window of its own, on a second monitor for example; again to put it back</translation>
    </message>
    <message>
        <source>Найти</source>
        <translation>Find</translation>
    </message>
    <message>
        <source>поле поиска дерева, в котором стоит курсор</source>
        <translation>the search field of the tree that the cursor is in</translation>
    </message>
    <message>
        <source>поиск по столам, элементам, ресурсам, файлам и людям</source>
        <translation>search desktops, items, resources, files and people</translation>
    </message>
    <message>
        <source>где используется ресурс текущей строки</source>
        <translation>where the resource of the current row is used</translation>
    </message>
    <message>
        <source>Следующее найденное</source>
        <translation>Next match</translation>
    </message>
    <message>
        <source>следующая найденная строка</source>
        <translation>next matching row</translation>
    </message>
    <message>
        <source>Предыдущее найденное</source>
        <translation>Previous match</translation>
    </message>
    <message>
        <source>предыдущая найденная строка</source>
        <translation>previous matching row</translation>
    </message>
    <message>
        <source>Искать по другому столбцу</source>
        <translation>Search by other column</translation>
    </message>
    <message>
        <source>«Искать по»: наименование или ресурс</source>
        <translation>“Search by”: name or resource</translation>
    </message>
    <message>
        <source>Следующая панель</source>
        <translation>Next pane</translation>
    </message>
    <message>
        <source>следующее дерево, паспорт или панель окна</source>
        <translation>next tree, properties or pane of the window</translation>
    </message>
    <message>
        <source>Предыдущая панель</source>
        <translation>Previous pane</translation>
    </message>
    <message>
        <source>то же в обратном порядке</source>
        <translation>the same in reverse order</translation>
    </message>
    <message>
        <source>Следующая вкладка</source>
        <translation>Next tab</translation>
    </message>
    <message>
        <source>следующая вкладка</source>
        <translation>next tab</translation>
    </message>
    <message>
        <source>Предыдущая вкладка</source>
        <translation>Previous tab</translation>
    </message>
    <message>
        <source>предыдущая вкладка</source>
        <translation>previous tab</translation>
    </message>
    <message>
        <source>Меню окна</source>
        <translation>Window menu</translation>
    </message>
    <message>
        <source>меню «Клиент», «Правка», «Вид», «Переход», «Справка»</source>
        <translation>menus “Client”, “Edit”, “View”, “Go”, “Help”</translation>
    </message>
    <message>
        <source>Контекстное меню</source>
        <translation>Context menu</translation>
    </message>
    <message>
        <source>контекстное меню текущей строки</source>
        <translation>context menu of the current row</translation>
    </message>
    <message>
        <source>Закрыть вкладку</source>
        <translation>Close tab</translation>
    </message>
    <message>
        <source>закрыть вкладку с формой или файлом</source>
        <translation>close a tab with a form or file</translation>
    </message>
    <message>
        <source>прочитать хранилище заново</source>
        <translation>read the store again</translation>
    </message>
    <message>
        <source>Открыть хранилище…</source>
        <translation>Open store…</translation>
    </message>
    <message>
        <source>открыть ещё одно хранилище</source>
        <translation>open another store</translation>
    </message>
    <message>
        <source>закрыть клиент</source>
        <translation>close the client</translation>
    </message>
    <message>
        <source>руководство на главе о том, где стоит курсор</source>
        <translation>the manual at the chapter about where the cursor is</translation>
    </message>
    <message>
        <source>модуль</source>
        <translation>module</translation>
    </message>
    <message>
        <source>модуля</source>
        <translation>modules</translation>
    </message>
    <message>
        <source>модулей</source>
        <translation>modules</translation>
    </message>
    <message>
        <source>функция</source>
        <translation>function</translation>
    </message>
    <message>
        <source>функции</source>
        <translation>functions</translation>
    </message>
    <message>
        <source>функций</source>
        <translation>functions</translation>
    </message>
    <message>
        <source>форма</source>
        <translation>form</translation>
    </message>
    <message>
        <source>формы</source>
        <translation>forms</translation>
    </message>
    <message>
        <source>форм</source>
        <translation>forms</translation>
    </message>
    <message>
        <source>файл</source>
        <translation>file</translation>
    </message>
    <message>
        <source>файла</source>
        <translation>files</translation>
    </message>
    <message>
        <source>файлов</source>
        <translation>files</translation>
    </message>
    <message>
        <source>Приложение не умеет открывать элементы меню.</source>
        <translation>The application cannot open menu items.</translation>
    </message>
    <message>
        <source>Приложение не умеет читать журнал изменений.</source>
        <translation>The application cannot read the change log.</translation>
    </message>
    <message>
        <source>Приложение не умеет показывать рабочие столы.</source>
        <translation>The application cannot show desktops.</translation>
    </message>
    <message>
        <source>Приложение не знает, где что используется.</source>
        <translation>The application does not know what is used where.</translation>
    </message>
    <message>
        <source>Приложение не умеет показывать руководство.</source>
        <translation>The application cannot show the manual.</translation>
    </message>
    <message>
        <source>и ещё %1</source>
        <translation>and %1 more</translation>
    </message>
    <message>
        <source> вместе с тем, что внутри</source>
        <translation> together with what is inside</translation>
    </message>
    <message>
        <source> со всем, что внутри (%1 %2)</source>
        <translation> with everything inside (%1 %2)</translation>
    </message>
    <message>
        <source> и ещё не меньше %1 %2</source>
        <translation> and at least %1 more %2</translation>
    </message>
    <message>
        <source>Повтор: </source>
        <translation>Redo: </translation>
    </message>
    <message>
        <source>действие</source>
        <translation>action</translation>
    </message>
    <message>
        <source>действия</source>
        <translation>actions</translation>
    </message>
    <message>
        <source>действий</source>
        <translation>actions</translation>
    </message>
    <message>
        <source>изменить записи</source>
        <translation>change records</translation>
    </message>
    <message>
        <source>вернуть</source>
        <translation>revert</translation>
    </message>
    <message>
        <source> со всем, что внутри</source>
        <translation> with everything inside</translation>
    </message>
    <message>
        <source> под именем </source>
        <translation> under the name </translation>
    </message>
    <message>
        <source>Действие %1 журнал уже не помнит</source>
        <translation>Action %1 is no longer in the log</translation>
    </message>
    <message>
        <source>Действие %1: его начало журнал уже не помнит</source>
        <translation>Action %1: its beginning is no longer in the log</translation>
    </message>
    <message>
        <source>Действие %1 уже отменено (%2)</source>
        <translation>Action %1 is already undone (%2)</translation>
    </message>
    <message>
        <source>Действие %1 ничего не изменило</source>
        <translation>Action %1 changed nothing</translation>
    </message>
    <message>
        <source>Из действий, которые изменили и другое, возвращается только то, что относится сюда</source>
        <translation>Of actions that changed other things too, only what belongs here is reverted</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1, поле «%2»: с тех пор изменено (%3)</source>
        <translation>Left as is: %1, field “%2”: changed since then (%3)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: с тех пор удалено (%2)</source>
        <translation>Not reverted: %1: deleted since then (%2)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: с тех пор перемещено (%2)</source>
        <translation>Not reverted: %1: moved since then (%2)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: нет места, удалена запись %2 (%3; %4)</source>
        <translation>Not reverted: %1: no place, record %2 was deleted (%3; %4)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: нет места, %2 стоит теперь внутри</source>
        <translation>Not reverted: %1: no place, %2 now stands inside it</translation>
    </message>
    <message>
        <source>Не возвращено: %1: ресурс %2 удалён (%3)</source>
        <translation>Not reverted: %1: resource %2 was deleted (%3)</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1: занята (%2)</source>
        <translation>Left as is: %1: locked (%2)</translation>
    </message>
    <message>
        <source>Оставлено как есть: содержимое формы %1: она занята (%2)</source>
        <translation>Left as is: content of form %1: it is locked (%2)</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1: занятость отменой не меняется</source>
        <translation>Left as is: %1: undo does not change locks</translation>
    </message>
    <message>
        <source>Уже удалено: %1 (%2)</source>
        <translation>Already deleted: %1 (%2)</translation>
    </message>
    <message>
        <source>Создание уже отменено: %1 (%2)</source>
        <translation>Creation already undone: %1 (%2)</translation>
    </message>
    <message>
        <source>Уже как прежде: %1</source>
        <translation>Already as before: %1</translation>
    </message>
    <message>
        <source>Без прав на сервере: %1: их даёт orvo-admin user login %2</source>
        <translation>Without rights on the server: %1: orvo-admin user login %2 grants them</translation>
    </message>
    <message>
        <source>Не удалено: %1: вместе с правами на сервере его убирает orvo-admin user remove %2</source>
        <translation>Not deleted: %1: orvo-admin user remove %2 removes it together with the rights on the server</translation>
    </message>
    <message>
        <source>%1: %2: имя %3 уже занято%4</source>
        <translation>%1: %2: name %3 is already taken%4</translation>
    </message>
    <message>
        <source>Не возвращено</source>
        <translation>Not reverted</translation>
    </message>
    <message>
        <source>Не удалено: %1: на этом построено другое (%2)</source>
        <translation>Not deleted: %1: something else builds on it (%2)</translation>
    </message>
    <message>
        <source>Не перенесено назад: %1 и всё, что перемещено вместе с ним: с тех пор изменено (%2)</source>
        <translation>Not moved back: %1 and everything moved with it: changed since then (%2)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: прежнее содержимое повреждено или изменено мимо программы</source>
        <translation>Not restored: %1: the earlier content is damaged or was changed outside the program</translation>
    </message>
    <message>
        <source>Не возвращено: %1: прежнее содержимое не хранится</source>
        <translation>Not restored: %1: the earlier content is not kept</translation>
    </message>
    <message>
        <source> вместе с тем, что внутри: </source>
        <translation> together with what is inside: </translation>
    </message>
    <message>
        <source>с верхнего уровня</source>
        <translation>from the top level</translation>
    </message>
    <message>
        <source>из %1</source>
        <translation>from %1</translation>
    </message>
    <message>
        <source>в %1</source>
        <translation>to %1</translation>
    </message>
    <message>
        <source> таблица %1</source>
        <translation> table %1</translation>
    </message>
    <message>
        <source>Изменена таблица %1</source>
        <translation>Changed table %1</translation>
    </message>
    <message>
        <source>, снова без названия</source>
        <translation>, untitled again</translation>
    </message>
    <message>
        <source>, снова </source>
        <translation>, again </translation>
    </message>
    <message>
        <source>: не было названия</source>
        <translation>: had no title</translation>
    </message>
    <message>
        <source>: было </source>
        <translation>: was </translation>
    </message>
    <message>
        <source>%1: тем временем %2 (%3)</source>
        <translation>%1: %2 in the meantime (%3)</translation>
    </message>
    <message>
        <source>удалено</source>
        <translation>deleted</translation>
    </message>
    <message>
        <source>создано</source>
        <translation>created</translation>
    </message>
    <message>
        <source>изменено</source>
        <translation>changed</translation>
    </message>
    <message>
        <source>%1: имя тем временем занято (%2)</source>
        <translation>%1: name taken in the meantime (%2)</translation>
    </message>
    <message>
        <source>тем временем отменили другую правку (%1)</source>
        <translation>another edit was undone in the meantime (%1)</translation>
    </message>
    <message>
        <source>вручную</source>
        <translation>by hand</translation>
    </message>
    <message>
        <source>папка рабочих столов</source>
        <translation>folder of desktops</translation>
    </message>
    <message>
        <source>папки рабочих столов</source>
        <translation>folders of desktops</translation>
    </message>
    <message>
        <source>папок рабочих столов</source>
        <translation>folders of desktops</translation>
    </message>
    <message>
        <source>рабочий стол</source>
        <translation>desktop</translation>
    </message>
    <message>
        <source>рабочих стола</source>
        <translation>desktops</translation>
    </message>
    <message>
        <source>рабочих столов</source>
        <translation>desktops</translation>
    </message>
    <message>
        <source>папка ресурсов</source>
        <translation>resource folder</translation>
    </message>
    <message>
        <source>папки ресурсов</source>
        <translation>resource folders</translation>
    </message>
    <message>
        <source>папок ресурсов</source>
        <translation>resource folders</translation>
    </message>
    <message>
        <source>пользователь</source>
        <translation>user</translation>
    </message>
    <message>
        <source>пользователя</source>
        <translation>users</translation>
    </message>
    <message>
        <source>пользователей</source>
        <translation>users</translation>
    </message>
    <message>
        <source>расширение файлов</source>
        <translation>file extension</translation>
    </message>
    <message>
        <source>расширения файлов</source>
        <translation>file extensions</translation>
    </message>
    <message>
        <source>расширений файлов</source>
        <translation>file extensions</translation>
    </message>
    <message>
        <source>содержимое файла</source>
        <translation>file content</translation>
    </message>
    <message>
        <source>файла с содержимым</source>
        <translation>files with content</translation>
    </message>
    <message>
        <source>файлов с содержимым</source>
        <translation>files with content</translation>
    </message>
    <message>
        <source> и ещё %1 %2</source>
        <translation> and %1 more %2</translation>
    </message>
    <message>
        <source>«%1»</source>
        <translation>“%1”</translation>
    </message>
    <message>
        <source>пусто</source>
        <translation>empty</translation>
    </message>
    <message>
        <source>да</source>
        <translation>yes</translation>
    </message>
    <message>
        <source>нет</source>
        <translation>no</translation>
    </message>
    <message>
        <source>Создан</source>
        <translation>Created</translation>
    </message>
    <message>
        <source>Создана</source>
        <translation>Created</translation>
    </message>
    <message>
        <source>Создано</source>
        <translation>Created</translation>
    </message>
    <message>
        <source>Созданы</source>
        <translation>Created</translation>
    </message>
    <message>
        <source>Удалён</source>
        <translation>Deleted</translation>
    </message>
    <message>
        <source>Удалена</source>
        <translation>Deleted</translation>
    </message>
    <message>
        <source>Удалено</source>
        <translation>Deleted</translation>
    </message>
    <message>
        <source>Удалены</source>
        <translation>Deleted</translation>
    </message>
    <message>
        <source>Переименован</source>
        <translation>Renamed</translation>
    </message>
    <message>
        <source>Переименована</source>
        <translation>Renamed</translation>
    </message>
    <message>
        <source>Переименовано</source>
        <translation>Renamed</translation>
    </message>
    <message>
        <source>Переименованы</source>
        <translation>Renamed</translation>
    </message>
    <message>
        <source>Перемещён</source>
        <translation>Moved</translation>
    </message>
    <message>
        <source>Перемещена</source>
        <translation>Moved</translation>
    </message>
    <message>
        <source>Перемещено</source>
        <translation>Moved</translation>
    </message>
    <message>
        <source>Перемещены</source>
        <translation>Moved</translation>
    </message>
    <message>
        <source>Изменён</source>
        <translation>Changed</translation>
    </message>
    <message>
        <source>Изменена</source>
        <translation>Changed</translation>
    </message>
    <message>
        <source>Изменено</source>
        <translation>Changed</translation>
    </message>
    <message>
        <source>Изменены</source>
        <translation>Changed</translation>
    </message>
    <message>
        <source>Занят</source>
        <translation>Locked</translation>
    </message>
    <message>
        <source>Занята</source>
        <translation>Locked</translation>
    </message>
    <message>
        <source>Занято</source>
        <translation>Locked</translation>
    </message>
    <message>
        <source>Заняты</source>
        <translation>Locked</translation>
    </message>
    <message>
        <source>Освобождён</source>
        <translation>Unlocked</translation>
    </message>
    <message>
        <source>Освобождена</source>
        <translation>Unlocked</translation>
    </message>
    <message>
        <source>Освобождено</source>
        <translation>Unlocked</translation>
    </message>
    <message>
        <source>Освобождены</source>
        <translation>Unlocked</translation>
    </message>
    <message>
        <source>Переставлен</source>
        <translation>Reordered</translation>
    </message>
    <message>
        <source>Переставлена</source>
        <translation>Reordered</translation>
    </message>
    <message>
        <source>Переставлено</source>
        <translation>Reordered</translation>
    </message>
    <message>
        <source>Переставлены</source>
        <translation>Reordered</translation>
    </message>
    <message>
        <source>создание</source>
        <translation>creation</translation>
    </message>
    <message>
        <source>удаление</source>
        <translation>deletion</translation>
    </message>
    <message>
        <source>переименование</source>
        <translation>renaming</translation>
    </message>
    <message>
        <source>перемещение</source>
        <translation>move</translation>
    </message>
    <message>
        <source>изменение</source>
        <translation>change</translation>
    </message>
    <message>
        <source>занятие</source>
        <translation>locking</translation>
    </message>
    <message>
        <source>освобождение</source>
        <translation>unlocking</translation>
    </message>
    <message>
        <source>перестановка</source>
        <translation>reordering</translation>
    </message>
    <message>
        <source>Отменена</source>
        <translation>Undone</translation>
    </message>
    <message>
        <source>создать</source>
        <translation>create</translation>
    </message>
    <message>
        <source>удалить</source>
        <translation>delete</translation>
    </message>
    <message>
        <source>переименовать</source>
        <translation>rename</translation>
    </message>
    <message>
        <source>переместить</source>
        <translation>move</translation>
    </message>
    <message>
        <source>изменить</source>
        <translation>change</translation>
    </message>
    <message>
        <source>занять</source>
        <translation>lock</translation>
    </message>
    <message>
        <source>освободить</source>
        <translation>unlock</translation>
    </message>
    <message>
        <source>переставить</source>
        <translation>reorder</translation>
    </message>
    <message>
        <source>Не возвращено: </source>
        <translation>Not restored: </translation>
    </message>
    <message>
        <source>версия уже не хранится</source>
        <translation>the version is no longer kept</translation>
    </message>
    <message>
        <source>формы или файла больше нет: сначала верните удаление в истории</source>
        <translation>the form or file no longer exists: revert its deletion in the history first</translation>
    </message>
    <message>
        <source>в %1 %2</source>
        <translation>in %1 %2</translation>
    </message>
    <message>
        <source>месте</source>
        <translation>place</translation>
    </message>
    <message>
        <source>местах</source>
        <translation>places</translation>
    </message>
    <message>
        <source>в разных местах</source>
        <translation>in different places</translation>
    </message>
    <message>
        <source>Наименование</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Иконка</source>
        <translation>Icon</translation>
    </message>
    <message>
        <source>Разделитель</source>
        <translation>Separator</translation>
    </message>
    <message>
        <source>Один эжкземпляр</source>
        <translation>Single instance</translation>
    </message>
    <message>
        <source>Идентификатор</source>
        <translation>Identifier</translation>
    </message>
    <message>
        <source>Параметры</source>
        <translation>Parameters</translation>
    </message>
    <message>
        <source>тип</source>
        <translation>type</translation>
    </message>
    <message>
        <source>Тип</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>команда</source>
        <translation>command</translation>
    </message>
    <message>
        <source>Служебный столбец</source>
        <translation>Service column</translation>
    </message>
    <message>
        <source>Да</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>Нет</source>
        <translation>No</translation>
    </message>
    <message>
        <source>ОК</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>мимо клиента</source>
        <translation>another program</translation>
    </message>
    <message>
        <source> «%1»</source>
        <translation> “%1”</translation>
    </message>
    <message>
        <source>Изменено: %1</source>
        <translation>Changed by %1</translation>
    </message>
    <message>
        <source>; теперь</source>
        <translation>; now</translation>
    </message>
    <message>
        <source>Уже удалено%1: %2</source>
        <translation>Already deleted%1 by %2</translation>
    </message>
    <message>
        <source>. Вопрос снят.</source>
        <translation>. There is nothing left to decide.</translation>
    </message>
    <message>
        <source>Внутри появилось%1: %2. Вопрос снят: посмотрите и решите заново.</source>
        <translation>Inside, added%1 by %2. The question is withdrawn: look and decide again.</translation>
    </message>
    <message>
        <source>Внутри удалено%1: %2</source>
        <translation>Inside, deleted%1 by %2</translation>
    </message>
    <message>
        <source>Внутри изменено: %1</source>
        <translation>Inside, changed by %1</translation>
    </message>
    <message>
        <source>Не введено: знака %1 нет в кодировке Windows-1251.</source>
        <translation>Not entered: character %1 is not in the Windows-1251 encoding.</translation>
    </message>
    <message>
        <source>Не введено: знаков %1 нет в кодировке Windows-1251.</source>
        <translation>Not entered: characters %1 are not in the Windows-1251 encoding.</translation>
    </message>
    <message>
        <source>Не введено: больше %1 знаков поле не берёт.</source>
        <translation>Not entered: the field takes no more than %1 characters.</translation>
    </message>
    <message>
        <source>Чтение сведений о пользователе</source>
        <translation>Reading user data</translation>
    </message>
    <message>
        <source>Запрос «%1»</source>
        <translation>Request “%1”</translation>
    </message>
    <message>
        <source>%1 «%2»</source>
        <translation>%1 “%2”</translation>
    </message>
    <message>
        <source>Выборка элементов меню</source>
        <translation>Selecting menu items</translation>
    </message>
    <message>
        <source>ждёт: %1</source>
        <translation>waits for: %1</translation>
    </message>
    <message>
        <source>было записано, но сервер, который работает теперь, этого не имеет</source>
        <translation>was written, but the server that runs now does not have it</translation>
    </message>
    <message>
        <source>Чтение формы «%1»</source>
        <translation>Reading form “%1”</translation>
    </message>
    <message>
        <source>Список файлов папки «%1»</source>
        <translation>List of files of folder “%1”</translation>
    </message>
    <message>
        <source>Чтение файла «%1»</source>
        <translation>Reading file “%1”</translation>
    </message>
    <message>
        <source>Каталог %1 не создан: %2. Несохранённое останется только в памяти.</source>
        <translation>Directory %1 was not created: %2. What is unsaved will stay in memory only.</translation>
    </message>
    <message>
        <source>%1 не записан: %2</source>
        <translation>%1 was not written: %2</translation>
    </message>
    <message>
        <source>Несохранённое не прочитано, файлы оставлены на месте: %1</source>
        <translation>Unsaved changes were not read, the files were left in place: %1</translation>
    </message>
    <message>
        <source>Не записано: </source>
        <translation>Not written: </translation>
    </message>
    <message>
        <source>Список «Не записано» снова хранится на диске весь</source>
        <translation>The “Not written” list is again kept on disk in full</translation>
    </message>
    <message>
        <source>эти же поля изменил другой: %1</source>
        <translation>the same fields were changed by %1</translation>
    </message>
    <message>
        <source>записи нет в хранилище</source>
        <translation>the record is not in the store</translation>
    </message>
    <message>
        <source>запись удалена: %1, %2</source>
        <translation>the record was deleted: %1, %2</translation>
    </message>
    <message>
        <source>Записано: %1</source>
        <translation>Written: %1</translation>
    </message>
    <message>
        <source>связь потеряна при записи; в хранилище этого нет</source>
        <translation>connection lost while writing; the store does not have this</translation>
    </message>
    <message>
        <source>связь потеряна при записи; журнал изменений очищен, и узнать исход уже нельзя</source>
        <translation>connection lost while writing; the change log was cleared, and the outcome can no longer be learned</translation>
    </message>
    <message>
        <source>Связь терялась при записи, но записано: %1</source>
        <translation>The connection was lost while writing, but this was written: %1</translation>
    </message>
    <message>
        <source>Загрузка формы %1</source>
        <translation>Upload of form %1</translation>
    </message>
    <message>
        <source>Загрузка файла </source>
        <translation>Upload of file </translation>
    </message>
    <message>
        <source>Загрузка файлов: %1</source>
        <translation>Upload of files: %1</translation>
    </message>
    <message>
        <source>Удаление форм: %1</source>
        <translation>Deletion of forms: %1</translation>
    </message>
    <message>
        <source>Удаление файлов: %1</source>
        <translation>Deletion of files: %1</translation>
    </message>
    <message>
        <source>Запись в таблицу %1</source>
        <translation>Writing to table %1</translation>
    </message>
    <message>
        <source>Вход</source>
        <translation>Login</translation>
    </message>
    <message>
        <source>Фамилия</source>
        <translation>Last name</translation>
    </message>
    <message>
        <source>Отчество</source>
        <translation>Middle name</translation>
    </message>
    <message>
        <source>Программа</source>
        <translation>Program</translation>
    </message>
    <message>
        <source>Расширение</source>
        <translation>Extension</translation>
    </message>
    <message>
        <source>Папка</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Вид</source>
        <translation>Kind</translation>
    </message>
    <message>
        <source>Значок</source>
        <translation>Icon</translation>
    </message>
    <message>
        <source>Кем занята</source>
        <translation>Locked by</translation>
    </message>
    <message>
        <source>Когда занята</source>
        <translation>Locked at</translation>
    </message>
    <message>
        <source>Порядок</source>
        <translation>Order</translation>
    </message>
    <message>
        <source>Папка меню</source>
        <translation>Menu folder</translation>
    </message>
    <message>
        <source>Одна копия</source>
        <translation>Single instance</translation>
    </message>
    <message>
        <source>Ресурс</source>
        <translation>Resource</translation>
    </message>
    <message>
        <source>Время файла</source>
        <translation>File time</translation>
    </message>
    <message>
        <source>Таблица </source>
        <translation>Table </translation>
    </message>
    <message>
        <source>Заблокировано</source>
        <translation>Locked by</translation>
    </message>
    <message>
        <source>Дата блокировки</source>
        <translation>Lock date</translation>
    </message>
    <message>
        <source>оболочки «</source>
        <translation>shell “</translation>
    </message>
    <message>
        <source>» нет среди </source>
        <translation>” is not among </translation>
    </message>
    <message>
        <source>Вызов: orvo-admin </source>
        <translation>Usage: orvo-admin </translation>
    </message>
    <message>
        <source>Ведение хранилища Orvo.

Действия:
</source>
        <translation>Maintenance of an Orvo store.

Actions:
</translation>
    </message>
    <message>
        <source>
Справка о действии: orvo-admin ДЕЙСТВИЕ --help
Коды завершения: 0 сделано, 1 проверка нашла ошибки, 2 сбой или неверный вызов,
130 прервано.</source>
        <translation>
Help on an action: orvo-admin ACTION --help
Exit codes: 0 done, 1 the check found errors, 2 failure or wrong usage,
130 interrupted.</translation>
    </message>
    <message>
        <source>[--store URL] ДЕЙСТВИЕ ...</source>
        <translation>[--store URL] ACTION ...</translation>
    </message>
    <message>
        <source>неизвестное действие «</source>
        <translation>unknown action “</translation>
    </message>
    <message>
        <source>»</source>
        <translation>”</translation>
    </message>
    <message>
        <source>; список: orvo-admin --help</source>
        <translation>; for a list: orvo-admin --help</translation>
    </message>
    <message>
        <source>»; после «</source>
        <translation>”; after “</translation>
    </message>
    <message>
        <source>» бывает: </source>
        <translation>” comes one of: </translation>
    </message>
    <message>
        <source>действие «</source>
        <translation>action “</translation>
    </message>
    <message>
        <source>» не закончено; дальше бывает: </source>
        <translation>” is not complete; next comes one of: </translation>
    </message>
    <message>
        <source>адрес хранилища после --store пуст</source>
        <translation>the store address after --store is empty</translation>
    </message>
    <message>
        <source>: не хватает аргументов; вызов: orvo-admin </source>
        <translation>: too few arguments; usage: orvo-admin </translation>
    </message>
    <message>
        <source>: лишний аргумент «</source>
        <translation>: unexpected argument “</translation>
    </message>
    <message>
        <source>»; вызов: orvo-admin </source>
        <translation>”; usage: orvo-admin </translation>
    </message>
    <message>
        <source>языка «</source>
        <translation>language “</translation>
    </message>
    <message>
        <source>не сказано, что делать; список действий: orvo-admin --help</source>
        <translation>no action given; for a list of actions: orvo-admin --help</translation>
    </message>
    <message>
        <source>: прервано</source>
        <translation>: interrupted</translation>
    </message>
    <message>
        <source>путь «</source>
        <translation>path “</translation>
    </message>
    <message>
        <source>» не годится: «</source>
        <translation>” is not valid: “</translation>
    </message>
    <message>
        <source>» не может быть именем папки</source>
        <translation>” cannot be a folder name</translation>
    </message>
    <message>
        <source>имя папки</source>
        <translation>folder name</translation>
    </message>
    <message>
        <source>в хранилище нет папки «</source>
        <translation>the store has no folder “</translation>
    </message>
    <message>
        <source>»; её делает orvo-admin init</source>
        <translation>”; orvo-admin init creates it</translation>
    </message>
    <message>
        <source>папки «</source>
        <translation>folder “</translation>
    </message>
    <message>
        <source>» нет</source>
        <translation>” does not exist</translation>
    </message>
    <message>
        <source>папка «</source>
        <translation>folder “</translation>
    </message>
    <message>
        <source>» не сделана</source>
        <translation>” was not created</translation>
    </message>
    <message>
        <source>orvo-admin: прервано
</source>
        <translation>orvo-admin: interrupted
</translation>
    </message>
    <message>
        <source>путь слишком длинный</source>
        <translation>the path is too long</translation>
    </message>
    <message>
        <source>файл «</source>
        <translation>file “</translation>
    </message>
    <message>
        <source>» не прочитан</source>
        <translation>” was not read</translation>
    </message>
    <message>
        <source>его нет</source>
        <translation>it does not exist</translation>
    </message>
    <message>
        <source>это каталог</source>
        <translation>it is a directory</translation>
    </message>
    <message>
        <source>это не обычный файл</source>
        <translation>it is not a regular file</translation>
    </message>
    <message>
        <source>он больше 900 МБ</source>
        <translation>it is larger than 900 MB</translation>
    </message>
    <message>
        <source>хранилище не принимает такое имя</source>
        <translation>the store does not accept such a name</translation>
    </message>
    <message>
        <source>имя файла</source>
        <translation>file name</translation>
    </message>
    <message>
        <source>каталога «</source>
        <translation>directory “</translation>
    </message>
    <message>
        <source>«</source>
        <translation>“</translation>
    </message>
    <message>
        <source>» не каталог</source>
        <translation>” is not a directory</translation>
    </message>
    <message>
        <source>» не записан</source>
        <translation>” was not written</translation>
    </message>
    <message>
        <source>» не записан: такое имя выводит из каталога</source>
        <translation>” was not written: such a name leads out of the directory</translation>
    </message>
    <message>
        <source>» не записан: </source>
        <translation>” was not written: </translation>
    </message>
    <message>
        <source>имя пустое</source>
        <translation>the name is empty</translation>
    </message>
    <message>
        <source>это сам файл хранилища</source>
        <translation>it is the store file itself</translation>
    </message>
    <message>
        <source> МБ</source>
        <translation> MB</translation>
    </message>
    <message>
        <source>таблица </source>
        <translation>table </translation>
    </message>
    <message>
        <source> не читается</source>
        <translation> cannot be read</translation>
    </message>
    <message>
        <source>нет таблицы </source>
        <translation>there is no table </translation>
    </message>
    <message>
        <source>не хватает памяти для таблицы </source>
        <translation>not enough memory for table </translation>
    </message>
    <message>
        <source>поле </source>
        <translation>field </translation>
    </message>
    <message>
        <source> не принимает значение</source>
        <translation> does not accept the value</translation>
    </message>
    <message>
        <source> содержит управляющий знак</source>
        <translation> contains a control character</translation>
    </message>
    <message>
        <source> «</source>
        <translation> “</translation>
    </message>
    <message>
        <source>» содержит знаки, которых нет в кодировке Windows-1251</source>
        <translation>” contains characters that are not in the Windows-1251 encoding</translation>
    </message>
    <message>
        <source>; может быть, «</source>
        <translation>; did you mean “</translation>
    </message>
    <message>
        <source>»?</source>
        <translation>”?</translation>
    </message>
    <message>
        <source>»: нужна </source>
        <translation>”: expected </translation>
    </message>
    <message>
        <source>вывод не принят: диск полон или канал закрыт</source>
        <translation>output was not accepted: the disk is full or the pipe is closed</translation>
    </message>
    <message>
        <source>не хватает памяти</source>
        <translation>not enough memory</translation>
    </message>
    <message>
        <source>логическое значение</source>
        <translation>a Boolean value</translation>
    </message>
    <message>
        <source>дробное число</source>
        <translation>a fractional number</translation>
    </message>
    <message>
        <source>это не выгрузка Orvo</source>
        <translation>this is not an Orvo export</translation>
    </message>
    <message>
        <source>текст</source>
        <translation>text</translation>
    </message>
    <message>
        <source>двоичные данные</source>
        <translation>binary data</translation>
    </message>
    <message>
        <source>объект {}</source>
        <translation>an object {}</translation>
    </message>
    <message>
        <source>нет таблицы &quot;</source>
        <translation>there is no table &quot;</translation>
    </message>
    <message>
        <source>нет списка &quot;files&quot;</source>
        <translation>the list &quot;files&quot; is missing</translation>
    </message>
    <message>
        <source>нет таблиц &quot;tables&quot;</source>
        <translation>&quot;tables&quot; is missing</translation>
    </message>
    <message>
        <source>список []</source>
        <translation>a list []</translation>
    </message>
    <message>
        <source>в &quot;data&quot; байт </source>
        <translation>bytes in &quot;data&quot;: </translation>
    </message>
    <message>
        <source>, а в &quot;size&quot; сказано </source>
        <translation>, but &quot;size&quot; says </translation>
    </message>
    <message>
        <source>файл не читается (</source>
        <translation>the file cannot be read (</translation>
    </message>
    <message>
        <source>файл оборван: JSON не закончен</source>
        <translation>the file is cut off: its JSON is not complete</translation>
    </message>
    <message>
        <source>это не JSON</source>
        <translation>this is not JSON</translation>
    </message>
    <message>
        <source> возле </source>
        <translation> near </translation>
    </message>
    <message>
        <source>строка </source>
        <translation>line </translation>
    </message>
    <message>
        <source>, файлы</source>
        <translation>, files</translation>
    </message>
    <message>
        <source>, таблица </source>
        <translation>, table </translation>
    </message>
    <message>
        <source>, запись </source>
        <translation>, record </translation>
    </message>
    <message>
        <source> (ключ </source>
        <translation> (key </translation>
    </message>
    <message>
        <source>здесь не ждали: </source>
        <translation>not expected here: </translation>
    </message>
    <message>
        <source>список кусков Base64</source>
        <translation>a list of Base64 pieces</translation>
    </message>
    <message>
        <source>true или false</source>
        <translation>true or false</translation>
    </message>
    <message>
        <source>целое число</source>
        <translation>a whole number</translation>
    </message>
    <message>
        <source>число</source>
        <translation>a number</translation>
    </message>
    <message>
        <source>поле &quot;</source>
        <translation>field &quot;</translation>
    </message>
    <message>
        <source>&quot;: нужно </source>
        <translation>&quot;: expected </translation>
    </message>
    <message>
        <source>, а стоит </source>
        <translation>, found </translation>
    </message>
    <message>
        <source>выгрузка версии </source>
        <translation>export of version </translation>
    </message>
    <message>
        <source>, известна </source>
        <translation>, this program knows version </translation>
    </message>
    <message>
        <source>&quot;: число слишком велико</source>
        <translation>&quot;: the number is too large</translation>
    </message>
    <message>
        <source>нет версии выгрузки</source>
        <translation>the version of the export is missing</translation>
    </message>
    <message>
        <source>неизвестное имя </source>
        <translation>unknown name </translation>
    </message>
    <message>
        <source> дано дважды</source>
        <translation> is given twice</translation>
    </message>
    <message>
        <source>неизвестная таблица </source>
        <translation>unknown table </translation>
    </message>
    <message>
        <source> дана дважды</source>
        <translation> is given twice</translation>
    </message>
    <message>
        <source>прервано</source>
        <translation>interrupted</translation>
    </message>
    <message>
        <source>после &quot;data&quot; полей быть не может</source>
        <translation>no field may follow &quot;data&quot;</translation>
    </message>
    <message>
        <source>неизвестное поле </source>
        <translation>unknown field </translation>
    </message>
    <message>
        <source>перед &quot;data&quot; нет размера &quot;size&quot;</source>
        <translation>there is no &quot;size&quot; before &quot;data&quot;</translation>
    </message>
    <message>
        <source>кусок в &quot;data&quot; длиннее </source>
        <translation>a piece of &quot;data&quot; is longer than </translation>
    </message>
    <message>
        <source> МиБ</source>
        <translation> MiB</translation>
    </message>
    <message>
        <source>в &quot;data&quot; не Base64</source>
        <translation>&quot;data&quot; is not Base64</translation>
    </message>
    <message>
        <source>в &quot;data&quot; больше байт, чем сказано в &quot;size&quot;</source>
        <translation>&quot;data&quot; has more bytes than &quot;size&quot; says</translation>
    </message>
    <message>
        <source>нет содержимого &quot;data&quot;</source>
        <translation>the content &quot;data&quot; is missing</translation>
    </message>
    <message>
        <source>файл не прочитан</source>
        <translation>the file was not read</translation>
    </message>
    <message>
        <source>, поле </source>
        <translation>, field </translation>
    </message>
    <message>
        <source>: текст не в кодировке UTF-8</source>
        <translation>: the text is not in UTF-8</translation>
    </message>
    <message>
        <source>файл не пишется (</source>
        <translation>the file cannot be written (</translation>
    </message>
    <message>
        <source>хранилище не прочитано</source>
        <translation>the store was not read</translation>
    </message>
    <message>
        <source>: такой ключ уже есть</source>
        <translation>: this key already exists</translation>
    </message>
    <message>
        <source>выгрузка не прочитана</source>
        <translation>the export was not read</translation>
    </message>
    <message>
        <source>различий нет</source>
        <translation>no differences</translation>
    </message>
    <message>
        <source>ничего не изменено: --only «</source>
        <translation>nothing was changed: --only “</translation>
    </message>
    <message>
        <source>: такого нет ни в выгрузке, ни в хранилище; запись можно назвать и ключом (его показывает history --json)</source>
        <translation>: neither the export nor the store has it; a record can also be named by its key (shown by history --json)</translation>
    </message>
    <message>
        <source>: таких </source>
        <translation>: matches: </translation>
    </message>
    <message>
        <source>, назовите по ключу: </source>
        <translation>, name one by its key: </translation>
    </message>
    <message>
        <source>ничего не изменено</source>
        <translation>nothing was changed</translation>
    </message>
    <message>
        <source>: «</source>
        <translation>: “</translation>
    </message>
    <message>
        <source>» не выгрузка (её делает export)</source>
        <translation>” is not an export (made by export)</translation>
    </message>
    <message>
        <source>записывать нечего</source>
        <translation>nothing to write</translation>
    </message>
    <message>
        <source>записалось бы записей: </source>
        <translation>records that would be written: </translation>
    </message>
    <message>
        <source>записано записей: </source>
        <translation>records written: </translation>
    </message>
    <message>
        <source>; отменить: orvo-admin undo </source>
        <translation>; to undo: orvo-admin undo </translation>
    </message>
    <message>
        <source>контрольная сумма «</source>
        <translation>checksum “</translation>
    </message>
    <message>
        <source>» не записана: </source>
        <translation>” was not written: </translation>
    </message>
    <message>
        <source>резервная копия</source>
        <translation>backup</translation>
    </message>
    <message>
        <source>резервная копия не сделана</source>
        <translation>the backup was not made</translation>
    </message>
    <message>
        <source>резервная копия не сделана: прежний файл «</source>
        <translation>the backup was not made: the earlier file “</translation>
    </message>
    <message>
        <source>» не удаляется: </source>
        <translation>” cannot be deleted: </translation>
    </message>
    <message>
        <source>резервная копия сделана: </source>
        <translation>backup made: </translation>
    </message>
    <message>
        <source>, байт: </source>
        <translation>, bytes: </translation>
    </message>
    <message>
        <source>хранилище не восстановлено: файла «</source>
        <translation>the store was not restored: file “</translation>
    </message>
    <message>
        <source>» нет, или он не читается</source>
        <translation>” does not exist or cannot be read</translation>
    </message>
    <message>
        <source>хранилище не восстановлено: оно не пустое (</source>
        <translation>the store was not restored: it is not empty (</translation>
    </message>
    <message>
        <source>); заменить его - ключ --replace</source>
        <translation>); to replace it, use --replace</translation>
    </message>
    <message>
        <source>восстановление</source>
        <translation>restore</translation>
    </message>
    <message>
        <source>хранилище не восстановлено</source>
        <translation>the store was not restored</translation>
    </message>
    <message>
        <source>хранилище восстановлено: </source>
        <translation>store restored: </translation>
    </message>
    <message>
        <source>контрольной суммы рядом с копией нет: проверено её устройство, но не каждый байт</source>
        <translation>there is no checksum beside the backup: its structure was checked, but not every byte</translation>
    </message>
    <message>
        <source>ничего не исправлено</source>
        <translation>nothing was fixed</translation>
    </message>
    <message>
        <source>журнал не читается</source>
        <translation>the log cannot be read</translation>
    </message>
    <message>
        <source>записи не читаются</source>
        <translation>the records cannot be read</translation>
    </message>
    <message>
        <source>файлы не перечислены</source>
        <translation>the files were not listed</translation>
    </message>
    <message>
        <source>ошибка: база данных: </source>
        <translation>error: database: </translation>
    </message>
    <message>
        <source>не показано: </source>
        <translation>not shown: </translation>
    </message>
    <message>
        <source>: ещё </source>
        <translation>: another </translation>
    </message>
    <message>
        <source> (все покажет --all)</source>
        <translation> (--all shows all)</translation>
    </message>
    <message>
        <source>проверено записей: </source>
        <translation>records checked: </translation>
    </message>
    <message>
        <source>, ошибок: </source>
        <translation>, errors: </translation>
    </message>
    <message>
        <source>, замечаний: </source>
        <translation>, warnings: </translation>
    </message>
    <message>
        <source>, исправлено: </source>
        <translation>, fixed: </translation>
    </message>
    <message>
        <source>, исправит --fix: </source>
        <translation>, --fix would fix: </translation>
    </message>
    <message>
        <source>исправлено: </source>
        <translation>fixed: </translation>
    </message>
    <message>
        <source>ошибка: </source>
        <translation>error: </translation>
    </message>
    <message>
        <source>замечание: </source>
        <translation>warning: </translation>
    </message>
    <message>
        <source>база данных не проверена</source>
        <translation>the database was not checked</translation>
    </message>
    <message>
        <source>: база данных повреждена, см. check без --fix</source>
        <translation>: the database is damaged, see check without --fix</translation>
    </message>
    <message>
        <source>--scale «</source>
        <translation>--scale “</translation>
    </message>
    <message>
        <source>» не число от </source>
        <translation>” is not a number from </translation>
    </message>
    <message>
        <source> до </source>
        <translation> to </translation>
    </message>
    <message>
        <source>образцовая установка не записана: в хранилище уже есть данные (</source>
        <translation>the sample installation was not written: the store already has data (</translation>
    </message>
    <message>
        <source>заполнение</source>
        <translation>filling</translation>
    </message>
    <message>
        <source>образцовая установка записана: ресурсов </source>
        <translation>sample installation written: resources </translation>
    </message>
    <message>
        <source>, элементов меню </source>
        <translation>, menu items </translation>
    </message>
    <message>
        <source>расширение</source>
        <translation>extension</translation>
    </message>
    <message>
        <source>расширение «</source>
        <translation>extension “</translation>
    </message>
    <message>
        <source>» </source>
        <translation>” </translation>
    </message>
    <message>
        <source>: оно пустое или содержит пробел, скобку, косую черту, * ? ;</source>
        <translation>: it is empty or contains a space, a bracket, a slash, * ? ;</translation>
    </message>
    <message>
        <source>: его нет</source>
        <translation>: it does not exist</translation>
    </message>
    <message>
        <source>не добавлено</source>
        <translation>not added</translation>
    </message>
    <message>
        <source>» не добавлено: оно уже есть</source>
        <translation>” not added: it already exists</translation>
    </message>
    <message>
        <source>расширение не добавлено</source>
        <translation>the extension was not added</translation>
    </message>
    <message>
        <source>расширение добавлено: </source>
        <translation>extension added: </translation>
    </message>
    <message>
        <source>не изменено</source>
        <translation>not changed</translation>
    </message>
    <message>
        <source>» не изменено: «</source>
        <translation>” not changed: “</translation>
    </message>
    <message>
        <source>» уже есть</source>
        <translation>” already exists</translation>
    </message>
    <message>
        <source>расширение не изменено</source>
        <translation>the extension was not changed</translation>
    </message>
    <message>
        <source>расширение изменено: </source>
        <translation>extension changed: </translation>
    </message>
    <message>
        <source>не удалено</source>
        <translation>not deleted</translation>
    </message>
    <message>
        <source>расширение не удалено</source>
        <translation>the extension was not deleted</translation>
    </message>
    <message>
        <source>расширение удалено: </source>
        <translation>extension deleted: </translation>
    </message>
    <message>
        <source> нет, или к ней не сохранено ни одного файла</source>
        <translation> does not exist or has no stored files</translation>
    </message>
    <message>
        <source>: имя «</source>
        <translation>: the name “</translation>
    </message>
    <message>
        <source>» выводит из каталога; ничего не записано</source>
        <translation>” leads out of the directory; nothing was written</translation>
    </message>
    <message>
        <source>: на месте «</source>
        <translation>: the path “</translation>
    </message>
    <message>
        <source>» лежит сам файл хранилища; ничего не записано</source>
        <translation>” is the store file itself; nothing was written</translation>
    </message>
    <message>
        <source>форма не извлечена</source>
        <translation>the form was not extracted</translation>
    </message>
    <message>
        <source>формы «</source>
        <translation>form “</translation>
    </message>
    <message>
        <source>файл не извлечён</source>
        <translation>the file was not extracted</translation>
    </message>
    <message>
        <source>файла «</source>
        <translation>file “</translation>
    </message>
    <message>
        <source>таблицы «</source>
        <translation>table “</translation>
    </message>
    <message>
        <source>» нет; есть: </source>
        <translation>” does not exist; there are: </translation>
    </message>
    <message>
        <source>--key «»: ключ пуст</source>
        <translation>--key “”: the key is empty</translation>
    </message>
    <message>
        <source>--limit «</source>
        <translation>--limit “</translation>
    </message>
    <message>
        <source>» не число от 1</source>
        <translation>” is not a number from 1 up</translation>
    </message>
    <message>
        <source>история не прочитана</source>
        <translation>the history was not read</translation>
    </message>
    <message>
        <source> [отменено]</source>
        <translation> [undone]</translation>
    </message>
    <message>
        <source>    ... и ещё </source>
        <translation>    ... and another </translation>
    </message>
    <message>
        <source>--within «</source>
        <translation>--within “</translation>
    </message>
    <message>
        <source>»: такого рабочего стола, папки или элемента меню нет</source>
        <translation>”: there is no such desktop, folder or menu item</translation>
    </message>
    <message>
        <source>начальные папки не сделаны</source>
        <translation>the initial folders were not created</translation>
    </message>
    <message>
        <source>записи не сосчитаны</source>
        <translation>the records were not counted</translation>
    </message>
    <message>
        <source>записей: </source>
        <translation>records: </translation>
    </message>
    <message>
        <source>, записей: </source>
        <translation>, records: </translation>
    </message>
    <message>
        <source>хранилище не сделано: каталога «</source>
        <translation>the store was not created: directory “</translation>
    </message>
    <message>
        <source>хранилище не сделано: </source>
        <translation>the store was not created: </translation>
    </message>
    <message>
        <source>триггеры не сделаны заново</source>
        <translation>the triggers were not recreated</translation>
    </message>
    <message>
        <source>хранилище уже есть: </source>
        <translation>store already exists: </translation>
    </message>
    <message>
        <source>хранилище сделано: </source>
        <translation>store created: </translation>
    </message>
    <message>
        <source>права не проверены</source>
        <translation>the rights were not checked</translation>
    </message>
    <message>
        <source>внимание: </source>
        <translation>attention: </translation>
    </message>
    <message>
        <source>форма не заблокирована: не сказано, кем (--login ВХОД)</source>
        <translation>the form was not locked: the user is not given (--login LOGIN)</translation>
    </message>
    <message>
        <source>форма не заблокирована: пользователя «</source>
        <translation>the form was not locked: user “</translation>
    </message>
    <message>
        <source>форма «</source>
        <translation>form “</translation>
    </message>
    <message>
        <source>» не заблокирована: её держит «</source>
        <translation>” was not locked: it is held by “</translation>
    </message>
    <message>
        <source>форма не заблокирована</source>
        <translation>the form was not locked</translation>
    </message>
    <message>
        <source>форма заблокирована: </source>
        <translation>form locked: </translation>
    </message>
    <message>
        <source>форма не была заблокирована: </source>
        <translation>the form had no lock: </translation>
    </message>
    <message>
        <source>блокировка не снята</source>
        <translation>the form was not unlocked</translation>
    </message>
    <message>
        <source>блокировка снята: </source>
        <translation>form unlocked: </translation>
    </message>
    <message>
        <source>ничего не забыто: --</source>
        <translation>nothing was forgotten: --</translation>
    </message>
    <message>
        <source>: это время ещё не наступило</source>
        <translation>: this time has not come yet</translation>
    </message>
    <message>
        <source>--versions-limit «</source>
        <translation>--versions-limit “</translation>
    </message>
    <message>
        <source>» не число от 0</source>
        <translation>” is not a number from 0 up</translation>
    </message>
    <message>
        <source>, забыты</source>
        <translation>, forgotten</translation>
    </message>
    <message>
        <source>, забывать нечего</source>
        <translation>, nothing to forget</translation>
    </message>
    <message>
        <source>прежнее содержимое не забыто</source>
        <translation>earlier content was not forgotten</translation>
    </message>
    <message>
        <source>прежних содержимых старше </source>
        <translation>earlier contents older than </translation>
    </message>
    <message>
        <source> и сверх </source>
        <translation> and beyond </translation>
    </message>
    <message>
        <source> МиБ: </source>
        <translation> MiB: </translation>
    </message>
    <message>
        <source> (байт: </source>
        <translation> (bytes: </translation>
    </message>
    <message>
        <source>журнал не сокращён</source>
        <translation>the log was not pruned</translation>
    </message>
    <message>
        <source>изменений старше </source>
        <translation>changes older than </translation>
    </message>
    <message>
        <source>ничего не загружено: имя «</source>
        <translation>nothing was uploaded: the name “</translation>
    </message>
    <message>
        <source>» дано дважды</source>
        <translation>” is given twice</translation>
    </message>
    <message>
        <source>; сделать её - ключ --make-folders</source>
        <translation>; to create it, use --make-folders</translation>
    </message>
    <message>
        <source>форма не загружена</source>
        <translation>the form was not uploaded</translation>
    </message>
    <message>
        <source>форма загружена, файлов: </source>
        <translation>form uploaded, files: </translation>
    </message>
    <message>
        <source>файлы не загружены</source>
        <translation>the files were not uploaded</translation>
    </message>
    <message>
        <source>файлов загружено: </source>
        <translation>files uploaded: </translation>
    </message>
    <message>
        <source>записей </source>
        <translation>records </translation>
    </message>
    <message>
        <source>, файлов </source>
        <translation>, files </translation>
    </message>
    <message>
        <source> (байт </source>
        <translation> (bytes </translation>
    </message>
    <message>
        <source>выгрузка не сделана</source>
        <translation>the export was not made</translation>
    </message>
    <message>
        <source>выгрузка</source>
        <translation>export</translation>
    </message>
    <message>
        <source>выгружено: </source>
        <translation>exported: </translation>
    </message>
    <message>
        <source>ничего не загружено: файл «</source>
        <translation>nothing was imported: file “</translation>
    </message>
    <message>
        <source>» не открывается: </source>
        <translation>” cannot be opened: </translation>
    </message>
    <message>
        <source>ничего не загружено: «</source>
        <translation>nothing was imported: “</translation>
    </message>
    <message>
        <source>» - каталог</source>
        <translation>” is a directory</translation>
    </message>
    <message>
        <source>ничего не загружено</source>
        <translation>nothing was imported</translation>
    </message>
    <message>
        <source>: хранилище не пустое (</source>
        <translation>: the store is not empty (</translation>
    </message>
    <message>
        <source>); заменить всё, что в нём есть, - ключ --replace</source>
        <translation>); to replace everything in it, use --replace</translation>
    </message>
    <message>
        <source>загрузка</source>
        <translation>import</translation>
    </message>
    <message>
        <source>загружено: </source>
        <translation>imported: </translation>
    </message>
    <message>
        <source>без входа на сервер (дать его: orvo-admin user login ВХОД): </source>
        <translation>without a server login (to give one: orvo-admin user login LOGIN): </translation>
    </message>
    <message>
        <source>ничего не отменено</source>
        <translation>nothing was undone</translation>
    </message>
    <message>
        <source>: --place «</source>
        <translation>: --place “</translation>
    </message>
    <message>
        <source>» не вида БЫЛА=СТАЛА</source>
        <translation>” is not of the form OLD=NEW</translation>
    </message>
    <message>
        <source>» не номер изменения</source>
        <translation>” is not the number of a change</translation>
    </message>
    <message>
        <source>: изменения </source>
        <translation>: change </translation>
    </message>
    <message>
        <source> в журнале нет</source>
        <translation> is not in the log</translation>
    </message>
    <message>
        <source>  ... и ещё </source>
        <translation>  ... and another </translation>
    </message>
    <message>
        <source>возвращать нечего</source>
        <translation>nothing to restore</translation>
    </message>
    <message>
        <source>: стандартный ввод закрыт</source>
        <translation>: standard input is closed</translation>
    </message>
    <message>
        <source>: на стандартном вводе нет пароля</source>
        <translation>: there is no password on standard input</translation>
    </message>
    <message>
        <source>пользователь не добавлен: имя входа пустое или с пробелом</source>
        <translation>the user was not added: the login name is empty or contains a space</translation>
    </message>
    <message>
        <source>имя входа</source>
        <translation>login name</translation>
    </message>
    <message>
        <source>фамилия</source>
        <translation>last name</translation>
    </message>
    <message>
        <source>имя</source>
        <translation>first name</translation>
    </message>
    <message>
        <source>отчество</source>
        <translation>middle name</translation>
    </message>
    <message>
        <source>пользователь не добавлен</source>
        <translation>the user was not added</translation>
    </message>
    <message>
        <source>пользователь не добавлен: «</source>
        <translation>the user was not added: “</translation>
    </message>
    <message>
        <source>пользователь добавлен: </source>
        <translation>user added: </translation>
    </message>
    <message>
        <source>пользователь не изменён: --</source>
        <translation>the user was not changed: --</translation>
    </message>
    <message>
        <source> или --</source>
        <translation> or --</translation>
    </message>
    <message>
        <source>, не оба</source>
        <translation>, not both</translation>
    </message>
    <message>
        <source>: пользователя «</source>
        <translation>: user “</translation>
    </message>
    <message>
        <source>пользователь не изменён</source>
        <translation>the user was not changed</translation>
    </message>
    <message>
        <source>: не сказано, что изменить; ключи: orvo-admin user change --help</source>
        <translation>: no change given; for the options: orvo-admin user change --help</translation>
    </message>
    <message>
        <source>пользователь изменён: </source>
        <translation>user changed: </translation>
    </message>
    <message>
        <source>пользователь не удалён</source>
        <translation>the user was not deleted</translation>
    </message>
    <message>
        <source>пользователь удалён: </source>
        <translation>user deleted: </translation>
    </message>
    <message>
        <source>, снято блокировок форм: </source>
        <translation>, forms unlocked: </translation>
    </message>
    <message>
        <source>вход не дан</source>
        <translation>the login was not given</translation>
    </message>
    <message>
        <source>вход на сервер дан: </source>
        <translation>server login given: </translation>
    </message>
    <message>
        <source>программа</source>
        <translation>program</translation>
    </message>
    <message>
        <source>человек</source>
        <translation>person</translation>
    </message>
    <message>
        <source>Чтение прервано.</source>
        <translation>Reading was interrupted.</translation>
    </message>
    <message>
        <source>Поиск в меню</source>
        <translation>Search in menu</translation>
    </message>
    <message>
        <source>Очистить поиск</source>
        <translation>Clear search</translation>
    </message>
    <message>
        <source>Очистить (Esc)</source>
        <translation>Clear (Esc)</translation>
    </message>
    <message>
        <source>Найдено</source>
        <translation>Found</translation>
    </message>
    <message>
        <source>Последние</source>
        <translation>Recent</translation>
    </message>
    <message>
        <source>Рабочего стола %1 нет.</source>
        <translation>There is no desktop %1.</translation>
    </message>
    <message>
        <source>Рабочих столов с названием %1 несколько; назовите путь или ключ.</source>
        <translation>There are several desktops titled %1; give a path or a key.</translation>
    </message>
    <message>
        <source>Меню рабочего стола %1 не прочитано.</source>
        <translation>The menu of desktop %1 was not read.</translation>
    </message>
    <message>
        <source>Как у оператора: %1</source>
        <translation>As operator: %1</translation>
    </message>
    <message>
        <source>Этот рабочий стол ещё не сохранён или не прочитан.</source>
        <translation>This desktop is not saved yet or was not read.</translation>
    </message>
    <message>
        <source>Этот рабочий стол удалён. Показано его последнее состояние.</source>
        <translation>This desktop was deleted. Its last state is shown.</translation>
    </message>
    <message>
        <source>Рабочий стол теперь называется %1.</source>
        <translation>The desktop is now called %1.</translation>
    </message>
    <message>
        <source>Рабочий стол теперь в другой папке.</source>
        <translation>The desktop is now in another folder.</translation>
    </message>
    <message>
        <source>Ошибка -&gt; %1</source>
        <translation>Error -&gt; %1</translation>
    </message>
    <message>
        <source> Доп. инф: %1</source>
        <translation> Details: %1</translation>
    </message>
    <message>
        <source>Ответ сервера не читается.</source>
        <translation>The server&apos;s reply cannot be read.</translation>
    </message>
    <message>
        <source>Отсутствуют поля.</source>
        <translation>Fields are missing.</translation>
    </message>
    <message>
        <source>папка</source>
        <translation>folder</translation>
    </message>
    <message>
        <source>Отсутствуют поля</source>
        <translation>Fields are missing</translation>
    </message>
    <message>
        <source>Нарушение структуры данных</source>
        <translation>Invalid data structure</translation>
    </message>
    <message>
        <source>Ошибка операции с сокетом</source>
        <translation>Socket operation failed</translation>
    </message>
    <message>
        <source>Неверные параметры</source>
        <translation>Invalid parameters</translation>
    </message>
    <message>
        <source>Недостаточно ОП</source>
        <translation>Not enough memory</translation>
    </message>
    <message>
        <source>Модуль не инициализирован</source>
        <translation>The module is not initialized</translation>
    </message>
    <message>
        <source>Сессия не активна</source>
        <translation>The session is not active</translation>
    </message>
    <message>
        <source>Подключение к серверу не удалось</source>
        <translation>Connection to the server failed</translation>
    </message>
    <message>
        <source>Пользователь не найден или неправильный пароль</source>
        <translation>User not found or wrong password</translation>
    </message>
    <message>
        <source>Имя не найдено</source>
        <translation>Name not found</translation>
    </message>
    <message>
        <source>Нарушен порядок блочных операций</source>
        <translation>Block operations out of order</translation>
    </message>
    <message>
        <source>Истек таймаут</source>
        <translation>Timed out</translation>
    </message>
    <message>
        <source>Превышено количество неверных попыток ввода пароля</source>
        <translation>Too many wrong password attempts</translation>
    </message>
    <message>
        <source>Подключение с недопустимого IP-адреса</source>
        <translation>Connection from an IP address that is not allowed</translation>
    </message>
    <message>
        <source>Описание ошибки отсутствует</source>
        <translation>No description of the error</translation>
    </message>
    <message>
        <source>действий больше </source>
        <translation>the number of actions exceeds </translation>
    </message>
    <message>
        <source>: выберите место ближе</source>
        <translation>: choose a closer point</translation>
    </message>
    <message>
        <source>: запись без ключа или не с теми полями</source>
        <translation>: record without a key or with the wrong fields</translation>
    </message>
    <message>
        <source>Выбрать</source>
        <translation>Choose</translation>
    </message>
    <message>
        <source>разные значения</source>
        <translation>different values</translation>
    </message>
    <message>
        <source>Свойство</source>
        <translation>Property</translation>
    </message>
    <message>
        <source>Значение</source>
        <translation>Value</translation>
    </message>
    <message>
        <source>Описание</source>
        <translation>Description</translation>
    </message>
    <message>
        <source>Файл </source>
        <translation>File </translation>
    </message>
    <message>
        <source> не меньше </source>
        <translation> is at least </translation>
    </message>
    <message>
        <source> МиБ: редакторы таких не переносят, это делает orvo-admin (put, get).</source>
        <translation> MiB: the editors do not transfer such files, orvo-admin does (put, get).</translation>
    </message>
    <message>
        <source>Недостаточно памяти.</source>
        <translation>Not enough memory.</translation>
    </message>
    <message>
        <source>Чтение таблицы</source>
        <translation>Reading table</translation>
    </message>
    <message>
        <source>Чтение структуры таблицы</source>
        <translation>Reading structure of table</translation>
    </message>
    <message>
        <source>Нет такой таблицы.</source>
        <translation>No such table.</translation>
    </message>
    <message>
        <source>Неизвестный запрос.</source>
        <translation>Unknown request.</translation>
    </message>
    <message>
        <source>Хранилище не открыто.</source>
        <translation>The store is not open.</translation>
    </message>
    <message>
        <source>Такой запрос не поддерживается.</source>
        <translation>This request is not supported.</translation>
    </message>
    <message>
        <source>; на экране прежнее меню</source>
        <translation>; the screen still shows the earlier menu</translation>
    </message>
    <message>
        <source>Нет таблицы или записей для неё.</source>
        <translation>No table, or no records for it.</translation>
    </message>
    <message>
        <source>Запись в таблицу</source>
        <translation>Writing to table</translation>
    </message>
    <message>
        <source>не записано: </source>
        <translation>not written: </translation>
    </message>
    <message>
        <source>Поиск записей в таблице</source>
        <translation>Searching for records in table</translation>
    </message>
    <message>
        <source>Нет такой таблицы или ключа.</source>
        <translation>No such table or key.</translation>
    </message>
    <message>
        <source>В хранилище нет файлов этой формы.</source>
        <translation>The store has no files of this form.</translation>
    </message>
    <message>
        <source>В хранилище нет этого файла.</source>
        <translation>The store does not have this file.</translation>
    </message>
    <message>
        <source>Неверный размер или содержимое файла.</source>
        <translation>Wrong size or content of the file.</translation>
    </message>
    <message>
        <source>Записи не читаются.</source>
        <translation>The records cannot be read.</translation>
    </message>
    <message>
        <source>Неизвестная операция.</source>
        <translation>Unknown operation.</translation>
    </message>
    <message>
        <source>Контрольная сумма файла </source>
        <translation>Checksum of file </translation>
    </message>
    <message>
        <source>Резервная копия </source>
        <translation>Backup </translation>
    </message>
    <message>
        <source>: контрольная сумма рядом с ней не читается (</source>
        <translation>: the checksum next to it cannot be read (</translation>
    </message>
    <message>
        <source> изменена или повреждена: её контрольная сумма не та, что в </source>
        <translation> was altered or damaged: its checksum is not the one in </translation>
    </message>
    <message>
        <source>пользователем </source>
        <translation>by user </translation>
    </message>
    <message>
        <source>, и уже не видно, что меняли другие</source>
        <translation>, and what others changed can no longer be seen</translation>
    </message>
    <message>
        <source>Папка </source>
        <translation>Folder </translation>
    </message>
    <message>
        <source>, в которой должна быть запись, удалена </source>
        <translation>, in which the record should be, was deleted </translation>
    </message>
    <message>
        <source>Ресурс </source>
        <translation>Resource </translation>
    </message>
    <message>
        <source> тем временем удалён </source>
        <translation> was meanwhile deleted </translation>
    </message>
    <message>
        <source>; выберите другой</source>
        <translation>; choose another one</translation>
    </message>
    <message>
        <source>Иконки </source>
        <translation>Icon </translation>
    </message>
    <message>
        <source> больше нет: тем временем её файл </source>
        <translation> no longer exists: its file was meanwhile </translation>
    </message>
    <message>
        <source>удалён </source>
        <translation>deleted </translation>
    </message>
    <message>
        <source>переименован </source>
        <translation>renamed </translation>
    </message>
    <message>
        <source>; выберите другую</source>
        <translation>; choose another one</translation>
    </message>
    <message>
        <source>другой</source>
        <translation>someone else</translation>
    </message>
    <message>
        <source>пользователь </source>
        <translation>user </translation>
    </message>
    <message>
        <source>Не удалено: </source>
        <translation>Not deleted: </translation>
    </message>
    <message>
        <source> тем временем поместил внутрь </source>
        <translation> has meanwhile added </translation>
    </message>
    <message>
        <source>; посмотрите и удалите ещё раз</source>
        <translation>; look inside and delete again</translation>
    </message>
    <message>
        <source>: папка оказалась бы внутри самой себя</source>
        <translation>: the folder would be inside itself</translation>
    </message>
    <message>
        <source>Нет подключения к </source>
        <translation>No connection to </translation>
    </message>
    <message>
        <source>ожидание прервано</source>
        <translation>waiting was interrupted</translation>
    </message>
    <message>
        <source>Не хватает памяти</source>
        <translation>Out of memory</translation>
    </message>
    <message>
        <source>пользователь не найден или неправильный пароль (</source>
        <translation>user not found or wrong password (</translation>
    </message>
    <message>
        <source>нет базы </source>
        <translation>no database </translation>
    </message>
    <message>
        <source>недостаточно прав (</source>
        <translation>insufficient rights (</translation>
    </message>
    <message>
        <source>: нет программы </source>
        <translation>: missing program </translation>
    </message>
    <message>
        <source> (пакет postgresql-client)</source>
        <translation> (package postgresql-client)</translation>
    </message>
    <message>
        <source>: программа </source>
        <translation>: program </translation>
    </message>
    <message>
        <source> не запускается (</source>
        <translation> does not start (</translation>
    </message>
    <message>
        <source> не закончила работу</source>
        <translation> did not finish its work</translation>
    </message>
    <message>
        <source>: в ней нет хранилища</source>
        <translation>: it contains no store</translation>
    </message>
    <message>
        <source> сделана более новой версией программы (версия </source>
        <translation> was made by a newer version of the program (version </translation>
    </message>
    <message>
        <source>копия изменена: содержимое файла без его ресурса</source>
        <translation>the backup was altered: file content without its resource</translation>
    </message>
    <message>
        <source>копия изменена: содержимое файла не той длины</source>
        <translation>the backup was altered: file content of the wrong length</translation>
    </message>
    <message>
        <source>копия изменена: невозможная строка журнала изменений</source>
        <translation>the backup was altered: impossible row in the change log</translation>
    </message>
    <message>
        <source>копия изменена: не одна строка в таблице NciPruned</source>
        <translation>the backup was altered: not exactly one row in table NciPruned</translation>
    </message>
    <message>
        <source>Резервная копия</source>
        <translation>Backup</translation>
    </message>
    <message>
        <source>Восстановление</source>
        <translation>Restore</translation>
    </message>
    <message>
        <source>: нет места для списка (</source>
        <translation>: no space for the list (</translation>
    </message>
    <message>
        <source>Запись прервана, ничего не записано</source>
        <translation>Writing was interrupted, nothing was written</translation>
    </message>
    <message>
        <source>: сервер прислал непонятные данные</source>
        <translation>: the server sent unintelligible data</translation>
    </message>
    <message>
        <source>Нет функции </source>
        <translation>Missing function </translation>
    </message>
    <message>
        <source>Изменена функция </source>
        <translation>Altered function </translation>
    </message>
    <message>
        <source>Нет триггера </source>
        <translation>Missing trigger </translation>
    </message>
    <message>
        <source>Отключён триггер </source>
        <translation>Disabled trigger </translation>
    </message>
    <message>
        <source>Изменён триггер </source>
        <translation>Altered trigger </translation>
    </message>
    <message>
        <source> таблицы </source>
        <translation> of table </translation>
    </message>
    <message>
        <source>К базе может подключиться любой вход сервера: владелец базы закроет её командой REVOKE ALL ON DATABASE %I FROM PUBLIC</source>
        <translation>Any login of the server can connect to the database: the owner of the database closes it with REVOKE ALL ON DATABASE %I FROM PUBLIC</translation>
    </message>
    <message>
        <source>В схеме хранилища любой вход может создавать таблицы и функции: её владелец закроет это командой REVOKE CREATE ON SCHEMA public FROM PUBLIC</source>
        <translation>Any login can create tables and functions in the schema of the store: the owner of the schema prevents this with REVOKE CREATE ON SCHEMA public FROM PUBLIC</translation>
    </message>
    <message>
        <source>Права</source>
        <translation>Rights</translation>
    </message>
    <message>
        <source>Триггеры и функции</source>
        <translation>Triggers and functions</translation>
    </message>
    <message>
        <source>такой ключ уже есть</source>
        <translation>such a key already exists</translation>
    </message>
    <message>
        <source>нарушено правило таблицы (</source>
        <translation>a rule of the table was violated (</translation>
    </message>
    <message>
        <source>значение слишком велико (</source>
        <translation>the value is too large (</translation>
    </message>
    <message>
        <source>база занята другой программой</source>
        <translation>the database is locked by another program</translation>
    </message>
    <message>
        <source>сервер прервал команду: вышло отведённое ей время, или её отменил администратор</source>
        <translation>the server interrupted the command: it ran out of time, or an administrator canceled it</translation>
    </message>
    <message>
        <source>на диске сервера не осталось места</source>
        <translation>no space left on the disk of the server</translation>
    </message>
    <message>
        <source>серверу не хватает ресурсов (</source>
        <translation>the server is out of resources (</translation>
    </message>
    <message>
        <source>база повреждена (</source>
        <translation>the database is damaged (</translation>
    </message>
    <message>
        <source>внутренняя ошибка сервера (</source>
        <translation>internal server error (</translation>
    </message>
    <message>
        <source>сервер не отвечает</source>
        <translation>the server does not respond</translation>
    </message>
    <message>
        <source>соединение с базой потеряно</source>
        <translation>the connection to the database was lost</translation>
    </message>
    <message>
        <source>: её держит незаконченная транзакция входа </source>
        <translation>: it is held by an unfinished transaction of login </translation>
    </message>
    <message>
        <source> (процесс сервера </source>
        <translation> (server process </translation>
    </message>
    <message>
        <source>Проверка базы</source>
        <translation>Checking the database</translation>
    </message>
    <message>
        <source>Счётчик повреждённых страниц базы: </source>
        <translation>Count of damaged database pages: </translation>
    </message>
    <message>
        <source>Недействительный индекс </source>
        <translation>Invalid index </translation>
    </message>
    <message>
        <source>Прежнее содержимое файла &quot;</source>
        <translation>Earlier content of file &quot;</translation>
    </message>
    <message>
        <source>&quot; (версия </source>
        <translation>&quot; (version </translation>
    </message>
    <message>
        <source>) повреждено или изменено мимо программы: не сходится с контрольной суммой</source>
        <translation>) is damaged or was changed outside the program: it does not match its checksum</translation>
    </message>
    <message>
        <source>В журнале изменений строка </source>
        <translation>The change log has row </translation>
    </message>
    <message>
        <source> с номером, которого хранилище не давало: более новые изменения за ней не видны</source>
        <translation> with a number that the store never assigned: newer changes after it are not visible</translation>
    </message>
    <message>
        <source>Пользователь </source>
        <translation>User </translation>
    </message>
    <message>
        <source>: пароль не принят</source>
        <translation>: the password was not accepted</translation>
    </message>
    <message>
        <source>: такое имя не годится для входа на сервер</source>
        <translation>: such a name is not suitable for a server login</translation>
    </message>
    <message>
        <source>: такой вход на сервере уже есть, его пароль не меняется</source>
        <translation>: such a login already exists on the server, its password is not changed</translation>
    </message>
    <message>
        <source>: входа на этом сервере нет; его даёт user login</source>
        <translation>: there is no login on this server; the command user login gives one</translation>
    </message>
    <message>
        <source> владеет хранилищем: его прав не меняют</source>
        <translation> owns the store: the rights of its owner are not changed</translation>
    </message>
    <message>
        <source>Входы на сервер</source>
        <translation>Server logins</translation>
    </message>
    <message>
        <source>Чтение</source>
        <translation>Reading</translation>
    </message>
    <message>
        <source>: недопустимый знак в условии</source>
        <translation>: invalid character in the condition</translation>
    </message>
    <message>
        <source>База </source>
        <translation>Database </translation>
    </message>
    <message>
        <source> не создана</source>
        <translation> was not created</translation>
    </message>
    <message>
        <source>Хранилище </source>
        <translation>Store </translation>
    </message>
    <message>
        <source>Подключение</source>
        <translation>Connecting</translation>
    </message>
    <message>
        <source>Присутствие</source>
        <translation>Presence</translation>
    </message>
    <message>
        <source>Версия хранилища</source>
        <translation>Store version</translation>
    </message>
    <message>
        <source>Хранилище создано более новой версией программы (версия </source>
        <translation>The store was created by a newer version of the program (version </translation>
    </message>
    <message>
        <source>База не является хранилищем</source>
        <translation>The database is not a store</translation>
    </message>
    <message>
        <source>Обновление хранилища</source>
        <translation>Upgrading the store</translation>
    </message>
    <message>
        <source>Кодировка базы не UTF8</source>
        <translation>The encoding of the database is not UTF8</translation>
    </message>
    <message>
        <source>Непонятный адрес хранилища PostgreSQL; он имеет вид postgresql://ПОЛЬЗОВАТЕЛЬ@УЗЕЛ/БАЗА; особые знаки пишутся в нём кодом: @ как %40, / как %2F</source>
        <translation>Invalid PostgreSQL store address; it has the form postgresql://USER@HOST/DATABASE; special characters in it are written as codes: @ as %40, / as %2F</translation>
    </message>
    <message>
        <source>: неизвестно, сохранено ли изменение</source>
        <translation>: it is not known whether the change was saved</translation>
    </message>
    <message>
        <source>: у пользователя </source>
        <translation>: user </translation>
    </message>
    <message>
        <source> нет права на запись</source>
        <translation> has no right to write</translation>
    </message>
    <message>
        <source>изменения не сохранены: </source>
        <translation>the changes were not saved: </translation>
    </message>
    <message>
        <source>Соединение с базой потеряно при записи</source>
        <translation>The connection to the database was lost while writing</translation>
    </message>
    <message>
        <source>: изменения не сохранены</source>
        <translation>: the changes were not saved</translation>
    </message>
    <message>
        <source>: недопустимый знак в поле </source>
        <translation>: invalid character in field </translation>
    </message>
    <message>
        <source>база не читается (</source>
        <translation>the database cannot be read (</translation>
    </message>
    <message>
        <source>); повреждена ли она, скажет orvo-admin check</source>
        <translation>); orvo-admin check tells whether it is damaged</translation>
    </message>
    <message>
        <source>база не читалась (</source>
        <translation>the database could not be read (</translation>
    </message>
    <message>
        <source>), но её проверка повреждений не нашла; повторите попытку</source>
        <translation>), but a check of it found no damage; try again</translation>
    </message>
    <message>
        <source>файл базы повреждён (</source>
        <translation>the database file is damaged (</translation>
    </message>
    <message>
        <source>); ничего не удаляйте: данные извлекает sqlite3 ФАЙЛ .recover, см. руководство администратора, «Повреждённый файл SQLite»</source>
        <translation>); delete nothing: sqlite3 FILE .recover extracts the data, see the administrator manual, “Damaged SQLite file”</translation>
    </message>
    <message>
        <source>на диске не осталось места</source>
        <translation>no space left on the disk</translation>
    </message>
    <message>
        <source>база доступна только для чтения</source>
        <translation>the database is read-only</translation>
    </message>
    <message>
        <source>файл базы не читается или не пишется</source>
        <translation>the database file cannot be read or written</translation>
    </message>
    <message>
        <source>файл базы не открывается</source>
        <translation>the database file cannot be opened</translation>
    </message>
    <message>
        <source>значение слишком велико</source>
        <translation>the value is too large</translation>
    </message>
    <message>
        <source> неполная</source>
        <translation> is incomplete</translation>
    </message>
    <message>
        <source>: рядом лежит журнал </source>
        <translation>: next to it is the log </translation>
    </message>
    <message>
        <source>; это хранилище в работе, а не копия</source>
        <translation>; this is a store in use, not a backup</translation>
    </message>
    <message>
        <source>: это не копия хранилища SQLite</source>
        <translation>: this is not a backup of an SQLite store</translation>
    </message>
    <message>
        <source> изменена: </source>
        <translation> was altered: </translation>
    </message>
    <message>
        <source>содержимое файла без его ресурса</source>
        <translation>file content without its resource</translation>
    </message>
    <message>
        <source>невозможная строка журнала изменений</source>
        <translation>impossible row in the change log</translation>
    </message>
    <message>
        <source>счётчик журнала изменений отстаёт от журнала</source>
        <translation>the counter of the change log is behind the log</translation>
    </message>
    <message>
        <source>не одна строка в таблице NciPruned</source>
        <translation>not exactly one row in table NciPruned</translation>
    </message>
    <message>
        <source>не одна строка в таблице NciWriter</source>
        <translation>not exactly one row in table NciWriter</translation>
    </message>
    <message>
        <source> повреждена: </source>
        <translation> is damaged: </translation>
    </message>
    <message>
        <source> изменена: содержимое файла не сходится с его контрольной суммой</source>
        <translation> was altered: the content of a file does not match its checksum</translation>
    </message>
    <message>
        <source>Резервная копия изменена: не одна строка в таблице NciStore</source>
        <translation>The backup was altered: not exactly one row in table NciStore</translation>
    </message>
    <message>
        <source> в копии испорчен: невозможный номер изменения</source>
        <translation> in the backup is corrupt: impossible change number</translation>
    </message>
    <message>
        <source>Резервная копия: это сам файл хранилища</source>
        <translation>Backup: this is the store file itself</translation>
    </message>
    <message>
        <source>Восстановление: это сам файл хранилища</source>
        <translation>Restore: this is the store file itself</translation>
    </message>
    <message>
        <source>файл обрезан: страниц </source>
        <translation>the file is truncated, pages present: </translation>
    </message>
    <message>
        <source> из </source>
        <translation> of </translation>
    </message>
    <message>
        <source>заголовок файла или оглавление базы не читается (</source>
        <translation>the file header or the table of contents of the database cannot be read (</translation>
    </message>
    <message>
        <source>Нет таблицы </source>
        <translation>Missing table </translation>
    </message>
    <message>
        <source>Изменена таблица </source>
        <translation>Altered table </translation>
    </message>
    <message>
        <source>Нет индекса </source>
        <translation>Missing index </translation>
    </message>
    <message>
        <source>Изменён индекс </source>
        <translation>Altered index </translation>
    </message>
    <message>
        <source>Устройство хранилища</source>
        <translation>Store structure</translation>
    </message>
    <message>
        <source>Журнал изменений</source>
        <translation>Change log</translation>
    </message>
    <message>
        <source>Поиск </source>
        <translation>Search for </translation>
    </message>
    <message>
        <source>: файл базы не читается</source>
        <translation>: the database file cannot be read</translation>
    </message>
    <message>
        <source>Нет доступа к файлу базы </source>
        <translation>No access to database file </translation>
    </message>
    <message>
        <source>Это не хранилище, а каталог: </source>
        <translation>This is not a store but a directory: </translation>
    </message>
    <message>
        <source>Это не хранилище: </source>
        <translation>This is not a store: </translation>
    </message>
    <message>
        <source>Файл не является хранилищем: </source>
        <translation>The file is not a store: </translation>
    </message>
    <message>
        <source>; рядом лежит журнал, не удаляйте его</source>
        <translation>; there is a log next to it, do not delete that log</translation>
    </message>
    <message>
        <source> не создано</source>
        <translation> was not created</translation>
    </message>
    <message>
        <source>: рядом остался журнал прежней базы </source>
        <translation>: next to it is still the log of an earlier database </translation>
    </message>
    <message>
        <source>: доступно только для чтения, а читать его можно, лишь пока оно открыто у того, кто может писать</source>
        <translation>: it is read-only, and it can be read only while someone who can write has it open</translation>
    </message>
    <message>
        <source>: в каталог базы нельзя писать, а её журнал лежит там же</source>
        <translation>: the directory of the database is not writable, and the database log is kept there too</translation>
    </message>
    <message>
        <source>: файл базы доступен только для чтения</source>
        <translation>: the database file is read-only</translation>
    </message>
    <message>
        <source>В адресе хранилища вида sqlite нет пути к файлу; он имеет вид sqlite:///путь/orvo.db</source>
        <translation>The store address of the sqlite kind has no file path; it has the form sqlite:///path/orvo.db</translation>
    </message>
    <message>
        <source>Нет файла базы </source>
        <translation>No database file </translation>
    </message>
    <message>
        <source>на месте</source>
        <translation>in place</translation>
    </message>
    <message>
        <source>файл базы удалён или перемещён</source>
        <translation>the database file was deleted or moved</translation>
    </message>
    <message>
        <source>на месте файла базы теперь другой файл</source>
        <translation>another file is now in the place of the database file</translation>
    </message>
    <message>
        <source>журнал базы (-wal или -shm) удалён или заменён; закройте все программы, которые открыли хранилище, и откройте его снова</source>
        <translation>the database log (-wal or -shm) was deleted or replaced; close all programs that have the store open and open it again</translation>
    </message>
    <message>
        <source>файл базы переписан мимо программы; закройте все программы, которые его открыли, и восстановите хранилище из копии</source>
        <translation>the database file was overwritten outside the program; close all programs that have it open and restore the store from a backup</translation>
    </message>
    <message>
        <source>Каталог</source>
        <translation>Directory</translation>
    </message>
    <message>
        <source>Файл в каталоге</source>
        <translation>File in directory</translation>
    </message>
    <message>
        <source>Триггеры</source>
        <translation>Triggers</translation>
    </message>
    <message>
        <source>Журнал прежней базы </source>
        <translation>The log of the earlier database </translation>
    </message>
    <message>
        <source> не переименован (</source>
        <translation> was not renamed (</translation>
    </message>
    <message>
        <source>: массив для записей не пуст</source>
        <translation>: the array for records is not empty</translation>
    </message>
    <message>
        <source>Неизвестная таблица </source>
        <translation>Unknown table </translation>
    </message>
    <message>
        <source>Внутренняя ошибка: </source>
        <translation>Internal error: </translation>
    </message>
    <message>
        <source>: не хватает памяти</source>
        <translation>: out of memory</translation>
    </message>
    <message>
        <source>: записи не складываются в таблицу (код </source>
        <translation>: the records do not form a table (code </translation>
    </message>
    <message>
        <source> содержимого </source>
        <translation> of content </translation>
    </message>
    <message>
        <source> содержимого файла </source>
        <translation> of the content of file </translation>
    </message>
    <message>
        <source> не сходится с записанным</source>
        <translation> does not match the recorded one</translation>
    </message>
    <message>
        <source>Нет контрольной суммы</source>
        <translation>No checksum</translation>
    </message>
    <message>
        <source>Байты</source>
        <translation>Bytes</translation>
    </message>
    <message>
        <source> повреждены или изменены мимо программы: не сходятся с контрольной суммой</source>
        <translation> are damaged or were changed outside the program: they do not match the checksum</translation>
    </message>
    <message>
        <source>: нет текстового поля </source>
        <translation>: no text field </translation>
    </message>
    <message>
        <source>: поле </source>
        <translation>: field </translation>
    </message>
    <message>
        <source> не хранит ключей</source>
        <translation> does not hold keys</translation>
    </message>
    <message>
        <source>Нет записей для таблицы </source>
        <translation>No records for table </translation>
    </message>
    <message>
        <source>Содержимое файла</source>
        <translation>File content</translation>
    </message>
    <message>
        <source>события </source>
        <translation>event </translation>
    </message>
    <message>
        <source> не достаёт до </source>
        <translation> does not reach back to </translation>
    </message>
    <message>
        <source>: он начинается после </source>
        <translation>: it begins after </translation>
    </message>
    <message>
        <source> не содержит прочитанного </source>
        <translation> does not contain the already read </translation>
    </message>
    <message>
        <source>: хранилище вернулось к более раннему состоянию, последние изменения потеряны</source>
        <translation>: the store has gone back to an earlier state, the latest changes are lost</translation>
    </message>
    <message>
        <source>: нулевой знак в условии</source>
        <translation>: null character in the condition</translation>
    </message>
    <message>
        <source>Содержимое без записи</source>
        <translation>Content without a record</translation>
    </message>
    <message>
        <source>: содержимое длиннее, чем сказано в записи</source>
        <translation>: the content is longer than the record says</translation>
    </message>
    <message>
        <source>: содержимое короче, чем сказано в записи</source>
        <translation>: the content is shorter than the record says</translation>
    </message>
    <message>
        <source>: запись с другим числом полей</source>
        <translation>: a record with a different number of fields</translation>
    </message>
    <message>
        <source>в ключе KeyLink допустимы только печатные знаки ASCII, хотя бы один</source>
        <translation>the key KeyLink may contain only printable ASCII characters, at least one</translation>
    </message>
    <message>
        <source>значение не подходит полю </source>
        <translation>the value does not fit field </translation>
    </message>
    <message>
        <source>размер содержимого не от 0 до </source>
        <translation>the size of the content is not from 0 to </translation>
    </message>
    <message>
        <source>недопустимое имя файла </source>
        <translation>invalid file name </translation>
    </message>
    <message>
        <source>Непонятный адрес хранилища</source>
        <translation>Invalid store address</translation>
    </message>
    <message>
        <source> вида </source>
        <translation> of kind </translation>
    </message>
    <message>
        <source>; он начинается с </source>
        <translation>; it begins with </translation>
    </message>
    <message>
        <source> или это путь к файлу</source>
        <translation> or is a file path</translation>
    </message>
    <message>
        <source>Знаки вне кодировки Windows-1251 недопустимы: </source>
        <translation>Characters outside the Windows-1251 encoding are not allowed: </translation>
    </message>
    <message>
        <source>Это хранилище не знает паролей и прав</source>
        <translation>This store has no passwords or rights</translation>
    </message>
    <message>
        <source>Пользователя </source>
        <translation>User </translation>
    </message>
    <message>
        <source> нет</source>
        <translation> does not exist</translation>
    </message>
    <message>
        <source>Имя пользователя пусто</source>
        <translation>The user name is empty</translation>
    </message>
    <message>
        <source> уже есть</source>
        <translation> already exists</translation>
    </message>
    <message>
        <source>У этого хранилища нет входов: его файл открывает тот, кому это позволяют права на файл</source>
        <translation>This store has no logins: its file can be opened by anyone whom the file permissions allow to</translation>
    </message>
    <message>
        <source>Прежнее содержимое</source>
        <translation>Earlier content</translation>
    </message>
    <message>
        <source>Прежнее содержимое файла </source>
        <translation>Earlier content of file </translation>
    </message>
    <message>
        <source> (версия </source>
        <translation> (version </translation>
    </message>
    <message>
        <source> не хранится</source>
        <translation> is not kept</translation>
    </message>
    <message>
        <source>: версии </source>
        <translation>: version </translation>
    </message>
    <message>
        <source> нет, её могло забыть сокращение (prune)</source>
        <translation> does not exist, pruning (prune) may have forgotten it</translation>
    </message>
    <message>
        <source> повреждено или изменено мимо программы: не сходится с контрольной суммой</source>
        <translation> is damaged or was changed outside the program: it does not match its checksum</translation>
    </message>
    <message>
        <source>Журнал изменений тем временем сокращён</source>
        <translation>The change log was pruned in the meantime</translation>
    </message>
    <message>
        <source>Журнал изменений тем временем заменён (хранилище восстановлено из копии или создано заново)</source>
        <translation>The change log was replaced in the meantime (the store was restored from a backup or created anew)</translation>
    </message>
    <message>
        <source>: нет такого поля</source>
        <translation>: no such field</translation>
    </message>
    <message>
        <source>: её тем временем изменили (</source>
        <translation>: it was changed in the meantime (</translation>
    </message>
    <message>
        <source>Тем временем отменили другую правку (</source>
        <translation>Another edit was undone in the meantime (</translation>
    </message>
    <message>
        <source>Не у каждой записи содержимого его байты</source>
        <translation>Not every content record has its bytes</translation>
    </message>
    <message>
        <source>Недопустимое имя файла </source>
        <translation>Invalid file name </translation>
    </message>
    <message>
        <source>В имени файла </source>
        <translation>File name </translation>
    </message>
    <message>
        <source> есть знаки вне кодировки Windows-1251</source>
        <translation> contains characters outside the Windows-1251 encoding</translation>
    </message>
    <message>
        <source> больше </source>
        <translation> is larger than </translation>
    </message>
    <message>
        <source>Нет папки с путём </source>
        <translation>No folder with path </translation>
    </message>
    <message>
        <source> формы </source>
        <translation> of form </translation>
    </message>
    <message>
        <source>Форма без файлов</source>
        <translation>Form without files</translation>
    </message>
    <message>
        <source>Два файла формы с одним именем</source>
        <translation>Two files of the form have the same name</translation>
    </message>
    <message>
        <source>Имя </source>
        <translation>Name </translation>
    </message>
    <message>
        <source> тем временем занял </source>
        <translation> was meanwhile taken by </translation>
    </message>
    <message>
        <source>: такая папка здесь уже есть</source>
        <translation>: such a folder already exists here</translation>
    </message>
    <message>
        <source>: такой ресурс уже есть</source>
        <translation>: such a resource already exists</translation>
    </message>
    <message>
        <source>: запись без ключа KeyLink</source>
        <translation>: a record without the key KeyLink</translation>
    </message>
    <message>
        <source>: недопустимый признак операции </source>
        <translation>: invalid operation flag </translation>
    </message>
    <message>
        <source>: в ключе допустимы только печатные знаки ASCII</source>
        <translation>: the key may contain only printable ASCII characters</translation>
    </message>
    <message>
        <source>: в таблице нет поля </source>
        <translation>: the table has no field </translation>
    </message>
    <message>
        <source>: значение не подходит полю </source>
        <translation>: the value does not fit field </translation>
    </message>
    <message>
        <source>Повторить всё</source>
        <comment>запись</comment>
        <translation>Retry all</translation>
    </message>
    <message>
        <source>Повторить</source>
        <comment>запись</comment>
        <translation>Retry</translation>
    </message>
    <message>
        <source>Вернуть</source>
        <comment>прежнее содержимое</comment>
        <translation>Restore</translation>
    </message>
    <message>
        <source>записи</source>
        <comment>не меньше одной</comment>
        <translation>record</translation>
    </message>
    <message>
        <source>Запись</source>
        <comment>столбец</comment>
        <translation>Record</translation>
    </message>
    <message>
        <source>Язык сообщений (иначе - язык системы).</source>
        <translation>Language of messages (otherwise the system language).</translation>
    </message>
    <message>
        <source>Внести без того, чьё имя занято или что здесь не на месте.</source>
        <translation>Apply without what has a name already taken or no place here.</translation>
    </message>
    <message>
        <source>Не удалено: %1: на это ссылается %2</source>
        <translation>Not deleted: %1: %2 refers to it</translation>
    </message>
    <message>
        <source> в хранилище не </source>
        <translation> in the store is not a </translation>
    </message>
    <message>
        <source>ресурс %1 не внесён</source>
        <translation>resource %1 was not applied</translation>
    </message>
    <message>
        <source> в хранилище на другом рабочем столе</source>
        <translation> is on another desktop in the store</translation>
    </message>
    <message>
        <source> в хранилище для ресурсов другого вида</source>
        <translation> is for resources of another kind in the store</translation>
    </message>
    <message>
        <source>: решите, как быть (</source>
        <translation>: decide what to do (</translation>
    </message>
    <message>
        <source>--other-names или </source>
        <translation>--other-names or </translation>
    </message>
    <message>
        <source>без этого --partly)</source>
        <translation>--partly to go without it)</translation>
    </message>
    <message>
        <source>Меню, опробованное на копии, - в живую установку: одной транзакцией и одним действием
истории, которое отменяет undo. С --only - только эту папку, рабочий стол, элемент или форму
со всем внутри, с недостающими папками над ними и ресурсами, на которые они ссылаются.
Чего в выгрузке нет, там удаляется. Пользователи и занятость ресурсов не меняются. Если
затронутое тем временем изменил кто-то другой, не меняется ничего. Форма, файл или папка,
чьё имя в хранилище занято другой записью, называется, и пока не решено, как быть, не
меняется ничего; если без неё, код завершения 1. То же с тем, чему в хранилище нет места, и с
удалением того, на что ссылается остающееся.</source>
        <translation>Takes a menu tried out on a copy into the live installation: in one transaction
and as one action of the history, which undo takes back. With --only, only this
folder, desktop, item or form with everything inside, with the missing folders
above and the resources referred to. What the export does not have is deleted
there. Users and locks of resources do not change. If somebody else has changed
the same records meanwhile, nothing is changed. A form, file or folder whose
name is held by another record in the store is named, and nothing is changed
until it is decided what to do; if it is left out, the exit code is 1. The same goes for what has no
place in the store, and for deleting what others that stay refer to.</translation>
    </message>
    <message>
        <source>Не возвращено: %1: нет места, %2 больше не %3 (%4)</source>
        <translation>Not reverted: %1: no place, %2 is no longer a %3 (%4)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: нет места, %2 теперь на другом рабочем столе (%3)</source>
        <translation>Not reverted: %1: no place, %2 is on another desktop now (%3)</translation>
    </message>
    <message>
        <source>Не возвращено: %1: нет места, %2 теперь для ресурсов другого вида (%3)</source>
        <translation>Not reverted: %1: no place, %2 is for resources of another kind now (%3)</translation>
    </message>
    <message>
        <source>Возвращено без картинки: %1: файла значка %2 больше нет (%3)</source>
        <translation>Reverted without its picture: %1: icon file %2 is gone (%3)</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1, поле «%2»: файла %3 больше нет (%4)</source>
        <translation>Left as is: %1, field “%2”: file %3 is gone (%4)</translation>
    </message>
    <message>
        <source>Не удалено: %1: без неё дерево ресурсов не загружается</source>
        <translation>Not deleted: %1: without it the resource tree does not load</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1, поле «%2»: внутри стоит другое (%3)</source>
        <translation>Left as is: %1, field “%2”: something else stands inside (%3)</translation>
    </message>
    <message>
        <source>Щёлкните или F12, чтобы прочесть и убрать.</source>
        <translation>Click or press F12 to read and dismiss it.</translation>
    </message>
    <message>
        <source>Вместо удалённой папки вернуть в эту: ключи через «=»; пусто после «=» - на верхний уровень (элемент меню, стол, файл).</source>
        <translation>Restore into this folder instead of the deleted one: keys separated by “=”; nothing after “=” means the top level (menu item, desktop, file).</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1, поле «%2»: ресурс %3 удалён (%4)</source>
        <translation>Left as is: %1, field “%2”: resource %3 was deleted (%4)</translation>
    </message>
    <message>
        <source>Клиент не запущен</source>
        <translation>The client was not started</translation>
    </message>
    <message>
        <source>Удалить и то, на чём построили другие, со всем внутри; что было раньше и только перенесено туда, вернуть на место; вырезанное перенести назад с тем, что в нём изменили.</source>
        <translation>Also delete what others have built on, with everything in it; put back what was there before and was only moved into it; move back what was cut, with what was changed in it.</translation>
    </message>
    <message>
        <source>Не удалено, а возвращено туда, где было: %1 (%2)</source>
        <translation>Not deleted but put back where it was: %1 (%2)</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1: внутри стоит %2, прежнего места больше нет</source>
        <translation>Left as it is: %1: it holds %2, whose former place is gone</translation>
    </message>
    <message>
        <source>верхний уровень</source>
        <translation>the top level</translation>
    </message>
    <message>
        <source>%1 стоит теперь внутри</source>
        <translation>%1 is inside by now</translation>
    </message>
    <message>
        <source>%1 не %2</source>
        <translation>%1 is no %2</translation>
    </message>
    <message>
        <source>%1 на другом рабочем столе</source>
        <translation>%1 is on another desktop</translation>
    </message>
    <message>
        <source>%1 для ресурсов другого вида</source>
        <translation>%1 is for resources of another kind</translation>
    </message>
    <message>
        <source>записи %1 нет (%2)</source>
        <translation>there is no record %1 (%2)</translation>
    </message>
    <message>
        <source>%1; выбранное место не годится: %2</source>
        <translation>%1; the chosen place will not do: %2</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1: без неё дерево ресурсов не загружается</source>
        <translation>Left as it is: %1: without it the tree of resources is not loaded</translation>
    </message>
    <message>
        <source>Оставлено как есть: %1, поле «%2»: без неё дерево ресурсов не загружается</source>
        <translation>Left as it is: %1, field “%2”: without it the tree of resources is not loaded</translation>
    </message>
    <message>
        <source>или без этого --partly</source>
        <translation>or --partly to go without it</translation>
    </message>
    <message>
        <source>Выбор модулей АРМ</source>
        <translation>Choose workstation modules</translation>
    </message>
    <message>
        <source>Выбор функций АРМ</source>
        <translation>Choose workstation functions</translation>
    </message>
    <message>
        <source>Функции</source>
        <translation>Functions</translation>
    </message>
    <message>
        <source>Выбор форм отображения АРМ</source>
        <translation>Choose workstation display forms</translation>
    </message>
    <message>
        <source>Формы</source>
        <translation>Forms</translation>
    </message>
    <message>
        <source>более старое журнал уже не помнит</source>
        <translation>the log no longer knows of anything older</translation>
    </message>
    <message>
        <source>форма не загружена: «</source>
        <translation>form not uploaded: “</translation>
    </message>
    <message>
        <source>» занята (</source>
        <translation>” is taken (</translation>
    </message>
    <message>
        <source>); освободить её: orvo-admin unlock </source>
        <translation>); to release it: orvo-admin unlock </translation>
    </message>
    <message>
        <source>Все названные файлы составляют одну форму. Её имя - имя файла, который оканчивается на «_»,
а если такого нет, самое короткое. Файлы формы с другими именами остаются в хранилище.
Путь считается от папки «формы отображения». Форма, которую другой взял в работу, не
заменяется: её освобождает он сам или unlock.</source>
        <translation>All files given make up one form. Its name is the name of the file that ends in
“_” or, if there is none, the shortest. Files of the form with other names stay
in the store. The path is counted from the folder “формы отображения”. A form
that somebody else has taken is not replaced: they release it, or unlock does.</translation>
    </message>
    <message>
        <source> журнал уже не помнит</source>
        <translation> is no longer in the log</translation>
    </message>
    <message>
        <source>Снова как прежде: </source>
        <translation>As before again: </translation>
    </message>
    <message>
        <source>Записаны заново: </source>
        <translation>Written anew: </translation>
    </message>
    <message>
        <source>записать заново </source>
        <translation>write anew </translation>
    </message>
    <message>
        <source>Записаны заново те же значения</source>
        <translation>The same values written anew</translation>
    </message>
    <message>
        <source>; возвращено ещё %1</source>
        <translation>; %1 more restored</translation>
    </message>
    <message>
        <source>; удалено %1</source>
        <translation>; %1 deleted</translation>
    </message>
    <message>
        <source> с</source>
        <translation> s</translation>
    </message>
    <message>
        <source>проверка записей</source>
        <translation>checking records</translation>
    </message>
    <message>
        <source>проверка базы данных</source>
        <translation>checking the database</translation>
    </message>
    <message>
        <source>подготовка хранилища</source>
        <translation>preparing the store</translation>
    </message>
    <message>
        <source>прежнее содержимое</source>
        <translation>former contents</translation>
    </message>
    <message>
        <source>журнал изменений</source>
        <translation>change log</translation>
    </message>
    <message>
        <source>[--older-than КОГДА] [--versions-older-than КОГДА] [--versions-limit МИБ] [--dry-run] [--progress]</source>
        <translation>[--older-than WHEN] [--versions-older-than WHEN] [--versions-limit MIB] [--dry-run] [--progress]</translation>
    </message>
    <message>
        <source>отмена</source>
        <translation>undo</translation>
    </message>
    <message>
        <source>[--dry-run] [--partly] [--with-others] [--other-names] [--progress] [--place БЫЛА=СТАЛА] ИЗМЕНЕНИЕ...</source>
        <translation>[--dry-run] [--partly] [--with-others] [--other-names] [--progress] [--place OLD=NEW] CHANGE...</translation>
    </message>
    <message>
        <source>открыть этот модуль; можно повторять (иначе открываются все)</source>
        <translation>open this module; can be repeated (otherwise all are opened)</translation>
    </message>
    <message>
        <source>Модуля «%1» нет среди %2.</source>
        <translation>Module “%1” is not one of %2.</translation>
    </message>
    <message>
        <source>Какое прежнее содержимое старо, если не %1d: </source>
        <translation>Which former contents are old, if not %1d: </translation>
    </message>
    <message>
        <source>Сколько мебибайт прежнего содержимого оставить, если не %1.</source>
        <translation>How many mebibytes of earlier content to keep, if not %1.</translation>
    </message>
    <message>
        <source>Что лежит в хранилище, не меняется. Из прежнего содержимого замещённых и удалённых форм и
файлов забывается то, что старше --versions-older-than или не умещается в --versions-limit.
Журнал изменений становится короче, только если сказано --older-than. Клиент, который был
отключён дольше, чем помнит журнал, замечает это и открывает свои модули заново.</source>
        <translation>What is in the store does not change. Of the earlier content of replaced and
deleted forms and files, what is older than --versions-older-than or does not
fit into --versions-limit is forgotten. The change log becomes shorter only if
--older-than is given. A client that was disconnected for longer than the log
remembers notices this and reopens its modules.</translation>
    </message>
</context>
<context>
    <name>orvo::AddButton</name>
    <message>
        <source>Добавить в меню (Enter)</source>
        <translation>Add to menu (Enter)</translation>
    </message>
</context>
<context>
    <name>orvo::TreeSearchBar</name>
    <message>
        <source>Поиск в дереве</source>
        <translation>Search in tree</translation>
    </message>
    <message>
        <source>Поиск...</source>
        <translation>Search...</translation>
    </message>
    <message>
        <source>Поиск</source>
        <translation>Search</translation>
    </message>
    <message>
        <source>Следующее найденное</source>
        <translation>Next match</translation>
    </message>
    <message>
        <source>Предыдущее найденное</source>
        <translation>Previous match</translation>
    </message>
    <message>
        <source>Искать по</source>
        <translation>Search by</translation>
    </message>
    <message>
        <source>Закрыть поиск</source>
        <translation>Close search</translation>
    </message>
</context>
</TS>
