<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Text</name>
    <message>
        <source>cannot read %1: %2</source>
        <translation>无法读取 %1：%2</translation>
    </message>
    <message>
        <source>a field or wave has more than %1 bytes</source>
        <translation>一个字段或波形超过 %1 字节</translation>
    </message>
    <message>
        <source>%1 is not written</source>
        <translation>%1 未写入</translation>
    </message>
    <message>
        <source>cannot write to %1: %2</source>
        <translation>无法写入 %1：%2</translation>
    </message>
    <message>
        <source>cannot keep %1 bytes in a temporary file: %2</source>
        <translation>无法把 %1 字节存入临时文件：%2</translation>
    </message>
    <message>
        <source>an error frame without a code</source>
        <translation>不含错误码的错误帧</translation>
    </message>
    <message>
        <source>the server&apos;s own code, from an error frame</source>
        <translation>服务器自身的错误码，来自错误帧</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1：%2</translation>
    </message>
    <message>
        <source>success</source>
        <translation>成功</translation>
    </message>
    <message>
        <source>The server answers, but clients of this library wait for a greeting. Check its settings, and that it is meant for these clients.</source>
        <translation>服务器能应答请求，但本库的客户端要等待问候帧。请检查服务器的设置，并确认它适用于这类客户端。</translation>
    </message>
    <message>
        <source>the server closed, or the connection broke</source>
        <translation>服务器关闭了连接，或连接中断</translation>
    </message>
    <message>
        <source>no complete reply in time</source>
        <translation>超时，没有收到完整的应答</translation>
    </message>
    <message>
        <source>the server closed before its greeting</source>
        <translation>服务器在发送问候帧之前关闭了连接</translation>
    </message>
    <message>
        <source>no greeting in time</source>
        <translation>超时，没有收到问候帧</translation>
    </message>
    <message>
        <source>no reply in time</source>
        <translation>超时，没有收到应答</translation>
    </message>
    <message>
        <source>failed with %1: %2: %3</source>
        <translation>失败，结果 %1（%2）：%3</translation>
    </message>
    <message>
        <source>requests</source>
        <translation>请求数</translation>
    </message>
    <message>
        <source>failures</source>
        <translation>失败数</translation>
    </message>
    <message>
        <source>per second</source>
        <translation>每秒请求数</translation>
    </message>
    <message>
        <source>least</source>
        <translation>最短</translation>
    </message>
    <message>
        <source>median</source>
        <translation>中位数</translation>
    </message>
    <message>
        <source>largest</source>
        <translation>最长</translation>
    </message>
    <message>
        <source>%1 of %2, %3 failed</source>
        <translation>%1/%2，失败 %3 次</translation>
    </message>
    <message>
        <source>INTEGER must be a 4-byte integer, got &apos;%1&apos;</source>
        <translation>INTEGER 必须是 4 字节整数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>%1 takes no arguments</source>
        <translation>%1 不带参数</translation>
    </message>
    <message>
        <source>%1 requires %2</source>
        <translation>%1 需要 %2</translation>
    </message>
    <message>
        <source>get the station&apos;s state</source>
        <translation>读取站的状态</translation>
    </message>
    <message>
        <source>get its clock, in seconds since 1970</source>
        <translation>读取站的时钟（1970 年以来的秒数）</translation>
    </message>
    <message>
        <source>reset it</source>
        <translation>复位站</translation>
    </message>
    <message>
        <source>set its clock to FIRST; SECOND is not used</source>
        <translation>将站的时钟设为 FIRST；SECOND 不起作用</translation>
    </message>
    <message>
        <source>set its state</source>
        <translation>设置站的状态</translation>
    </message>
    <message>
        <source>get integers, one per line</source>
        <translation>读取整数，每行一个</translation>
    </message>
    <message>
        <source>get bytes, in hexadecimal</source>
        <translation>读取字节，以十六进制输出</translation>
    </message>
    <message>
        <source>get texts, one per line</source>
        <translation>读取文本，每行一个</translation>
    </message>
    <message>
        <source>get an error frame</source>
        <translation>让站返回错误帧</translation>
    </message>
    <message>
        <source>an integer</source>
        <translation>一个整数</translation>
    </message>
    <message>
        <source>a list of integers</source>
        <translation>整数列表</translation>
    </message>
    <message>
        <source>a list of bytes</source>
        <translation>字节列表</translation>
    </message>
    <message>
        <source>a list of texts</source>
        <translation>文本列表</translation>
    </message>
    <message>
        <source>unknown COMMAND &apos;%1&apos;</source>
        <translation>未知的 COMMAND &apos;%1&apos;</translation>
    </message>
    <message>
        <source>COMMAND is required</source>
        <translation>必须给出 COMMAND</translation>
    </message>
    <message>
        <source>send command NUMBER instead of COMMAND</source>
        <translation>发送编号为 NUMBER 的命令，而不是 COMMAND</translation>
    </message>
    <message>
        <source>send NUMBER as arg1 of the header (default: 0)</source>
        <translation>帧头中 arg1 的值（默认为 0）</translation>
    </message>
    <message>
        <source>send NUMBER as arg2 of the header (default: 0)</source>
        <translation>帧头中 arg2 的值（默认为 0）</translation>
    </message>
    <message>
        <source>send BYTES, hex text or a dump, as payload instead of integers</source>
        <translation>以 BYTES（十六进制文本或转储）作为净荷，不使用整数</translation>
    </message>
    <message>
        <source>expect a reply of FORM, see above (default: int)</source>
        <translation>应答的格式为 FORM，见上文（默认为 int）</translation>
    </message>
    <message>
        <source>--reply must be int, ints, bytes or strings, got &apos;%1&apos;</source>
        <translation>--reply 必须是 int、ints、bytes 或 strings，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--hex and INTEGER exclude each other</source>
        <translation>--hex 与 INTEGER 不能同时使用</translation>
    </message>
    <message>
        <source>Sends a request to a server and prints the reply.

Commands:
%1
The last four are defined by the simulated station. --command sends any other command, with integers of
4 bytes each or any bytes as payload:
  gqtool call 127.0.0.1:5000 setState -1
  gqtool call 127.0.0.1:5000 --command 0x20 --reply ints 5
  gqtool call 127.0.0.1:5000 --command 6 --hex &apos;ff ff ff ff&apos;

A map of commands is a text file with a line COMMAND NAME REQUEST REPLY for each command of a server, such as
&apos;0x35 currentValues int bytes:pointRealDatas&apos;. REQUEST is -, int, intPair, ints or hex. REPLY is int, ints,
bytes, strings, or bytes:FORM for bytes that are records; &apos;gqtool decode --list&apos; prints the forms.
  gqtool call --map plant.map 127.0.0.1:5000 currentValues 0

Forms:
%2
--repeat sends the request many times and prints the number of failures, the requests per second, and the
least, median and largest time of a successful request. After each failure it connects again; that is not
timed. SIGINT and SIGTERM end it early; it then prints the results so far.</source>
        <translation>向服务器发送请求，并输出应答。

命令：
%1
最后四个命令由模拟站定义。用 --command 可发送任何其他命令，净荷为若干个 4 字节整数，或任意字节：
  gqtool call 127.0.0.1:5000 setState -1
  gqtool call 127.0.0.1:5000 --command 0x20 --reply ints 5
  gqtool call 127.0.0.1:5000 --command 6 --hex &apos;ff ff ff ff&apos;

命令表是文本文件，服务器的每个命令占一行，格式为 COMMAND NAME REQUEST REPLY，例如
&apos;0x35 currentValues int bytes:pointRealDatas&apos;。REQUEST 为 -、int、intPair、ints 或 hex。REPLY 为 int、ints、
bytes、strings；字节为记录时用 bytes:FORM，各种格式见 &apos;gqtool decode --list&apos;。
  gqtool call --map plant.map 127.0.0.1:5000 currentValues 0

格式：
%2
--repeat 多次发送请求，并输出失败数、每秒请求数，以及成功请求的最短、中位和最长时间。每次失败后重新连接，
重连的时间不计入。收到 SIGINT 或 SIGTERM 时提前结束，并输出已有的结果。</translation>
    </message>
    <message>
        <source>expect a list of NUMBER elements; 0 takes one frame as the whole reply (default: 0)</source>
        <translation>列表应有 NUMBER 项；0 表示一帧就是整个应答（默认为 0）</translation>
    </message>
    <message>
        <source>take COMMAND from the map of commands in FILE</source>
        <translation>按 FILE 中的命令表解释 COMMAND</translation>
    </message>
    <message>
        <source>wait up to MS for each read and write (default: 9000)</source>
        <translation>每次读写最多等待 MS 毫秒（默认为 9000）</translation>
    </message>
    <message>
        <source>send a datagram; a lost one times out</source>
        <translation>使用数据报；数据报丢失时超时</translation>
    </message>
    <message>
        <source>send the request TIMES times</source>
        <translation>将请求发送 TIMES 次</translation>
    </message>
    <message>
        <source>start a request every MS (default: 0, no pause)</source>
        <translation>每隔 MS 毫秒发送一个请求（默认为 0，不停顿）</translation>
    </message>
    <message>
        <source>print each reply as a line of JSON; with --repeat, the totals too</source>
        <translation>每个应答输出一行 JSON；与 --repeat 同用时还输出汇总</translation>
    </message>
    <message>
        <source>the server: a name or a dotted IPv4 address, and a port</source>
        <translation>服务器：主机名或点分十进制 IPv4 地址，加端口</translation>
    </message>
    <message>
        <source>one of the commands above or of the map, unless --command is given</source>
        <translation>上述命令之一，或命令表中的命令；使用 --command 时省略</translation>
    </message>
    <message>
        <source>arguments of the command</source>
        <translation>命令的参数</translation>
    </message>
    <message>
        <source>--count requires --command or --map</source>
        <translation>--count 需要 --command 或 --map</translation>
    </message>
    <message>
        <source>--map and --command exclude each other</source>
        <translation>--map 与 --command 不能同时使用</translation>
    </message>
    <message>
        <source>command %1</source>
        <translation>命令 %1</translation>
    </message>
    <message>
        <source>; did you mean &apos;%1&apos;?</source>
        <translation>；是否指 &apos;%1&apos;？</translation>
    </message>
    <message>
        <source>OPTIONS</source>
        <translation>选项</translation>
    </message>
    <message>
        <source>Arguments</source>
        <translation>参数</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>选项</translation>
    </message>
    <message>
        <source>must be an integer from %1 to %2, got &apos;%3&apos;</source>
        <translation>必须是 %1 到 %2 的整数，实际为 &apos;%3&apos;</translation>
    </message>
    <message>
        <source>unknown option &apos;%1&apos;</source>
        <translation>未知的选项 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--%1 takes no value</source>
        <translation>--%1 不带值</translation>
    </message>
    <message>
        <source>unexpected argument &apos;%1&apos;</source>
        <translation>多余的参数 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>%1 excludes %2</source>
        <translation>%1 不能与 %2 同时使用</translation>
    </message>
    <message>
        <source>%1 is required</source>
        <translation>必须给出 %1</translation>
    </message>
    <message>
        <source>print texts in LANG: en or zh (default: by the locale)</source>
        <translation>消息的语言：en 或 zh（默认按区域设置）</translation>
    </message>
    <message>
        <source>show this help</source>
        <translation>显示本帮助</translation>
    </message>
    <message>
        <source>see &apos;%1 --help&apos;</source>
        <translation>见 &apos;%1 --help&apos;</translation>
    </message>
    <message>
        <source>(rest), %1</source>
        <translation>（剩余部分），%1</translation>
    </message>
    <message>
        <source>(not read), %1</source>
        <translation>（未读取），%1</translation>
    </message>
    <message>
        <source>library: %1, %2</source>
        <translation>库的读取结果：%1（%2）</translation>
    </message>
    <message>
        <source>library: %1</source>
        <translation>库的读取结果：%1</translation>
    </message>
    <message>
        <source>frames of one direction, as a client or server receives them</source>
        <translation>同一方向的帧，即客户端或服务器所收到的帧</translation>
    </message>
    <message>
        <source>Forms:</source>
        <translation>格式：</translation>
    </message>
    <message>
        <source>byte %1: %2</source>
        <translation>字节 %1：%2</translation>
    </message>
    <message>
        <source>Prints the fields of a record, list, wave or frames, and the result of the library&apos;s own reader. Errors are
listed with their byte offset, after the fields that could be read; the exit code is then 1. Lists and frames
are printed while their bytes arrive, so they can be of any length.

  gqtool decode --as boolData 01 10270000 fa000000 02
  gqtool decode --as floatRealDatas --file values.hex --json
  gqtool decode --as floatRealDatas --raw --file values.bin --csv values.csv
  gqtool decode --as frames --payload ints 68 08000000 0700 00 00 20 01000000 64000000 0000 16

%1</source>
        <translation>输出记录、列表、波形或帧的各字段，以及库的读取函数的结果。先输出能够读出的字段，再列出各处错误及其字节偏移，
此时退出码为 1。列表和帧边接收边输出，因此长度不限。

  gqtool decode --as boolData 01 10270000 fa000000 02
  gqtool decode --as floatRealDatas --file values.hex --json
  gqtool decode --as floatRealDatas --raw --file values.bin --csv values.csv
  gqtool decode --as frames --payload ints 68 08000000 0700 00 00 20 01000000 64000000 0000 16

%1</translation>
    </message>
    <message>
        <source>decode the bytes as FORM, one of the forms above</source>
        <translation>按上述格式之一 FORM 解析字节</translation>
    </message>
    <message>
        <source>print a JSON object, which gqtool encode accepts; with --list one per form</source>
        <translation>输出 JSON 对象，可作为 gqtool encode 的输入；与 --list 同用时每种格式一个对象</translation>
    </message>
    <message>
        <source>print the forms and exit</source>
        <translation>列出各种格式后退出</translation>
    </message>
    <message>
        <source>decode frames as datagrams, not as a TCP stream</source>
        <translation>帧来自数据报，而不是 TCP 流</translation>
    </message>
    <message>
        <source>decode frames as requests of a client, not as replies</source>
        <translation>帧是客户端的请求，而不是应答</translation>
    </message>
    <message>
        <source>decode payloads of other than the ready-made commands as KIND: int, ints, bytes or strings</source>
        <translation>非预置命令的净荷按 KIND 解析：int、ints、bytes 或 strings</translation>
    </message>
    <message>
        <source>show commands and payloads of frames by the map of commands in FILE</source>
        <translation>按 FILE 中的命令表显示帧的命令和净荷</translation>
    </message>
    <message>
        <source>with --json, print the fields even if the input exceeds 1 MiB</source>
        <translation>与 --json 同用时，即使输入超过 1 MiB 也输出各字段</translation>
    </message>
    <message>
        <source>call the library&apos;s reader even if the input exceeds 1 MiB; takes memory for all of it</source>
        <translation>即使输入超过 1 MiB 也调用库的读取函数；需要容纳全部输入的内存</translation>
    </message>
    <message>
        <source>list at most N errors, and leave out what follows them</source>
        <translation>最多列出 N 处错误，省略其后的内容</translation>
    </message>
    <message>
        <source>--as FORM is required; --list prints the forms</source>
        <translation>必须给出 --as FORM；用 --list 列出各种格式</translation>
    </message>
    <message>
        <source>--payload must be one of %1, got &apos;%2&apos;</source>
        <translation>--payload 必须是 %1 之一，实际为 &apos;%2&apos;</translation>
    </message>
    <message>
        <source>--as must be a form of --list, got &apos;%1&apos;</source>
        <translation>--as 必须是 --list 中的格式，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--csv requires a list, and --as %1 is none</source>
        <translation>--csv 需要列表，而 --as %1 不是列表</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must have an even number of hex digits</source>
        <translation>&apos;%1&apos; 的十六进制数字个数必须是偶数</translation>
    </message>
    <message>
        <source>* must come after a line of bytes</source>
        <translation>* 必须跟在一行字节之后</translation>
    </message>
    <message>
        <source>a line of a dump must begin with an offset, got &apos;%1&apos;</source>
        <translation>转储的每一行必须以偏移开头，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>offset after * must be %1 and a multiple of %2, got %3</source>
        <translation>* 之后的偏移必须是 %1 加 %2的倍数，实际为 %3</translation>
    </message>
    <message>
        <source>; 1 byte is missing</source>
        <translation>；缺少 1 字节</translation>
    </message>
    <message>
        <source>; %1 bytes are missing</source>
        <translation>；缺少 %1 字节</translation>
    </message>
    <message>
        <source>offset must be %1, got %2%3</source>
        <translation>偏移必须是 %1，实际为 %2%3</translation>
    </message>
    <message>
        <source>* must be followed by an offset</source>
        <translation>* 之后必须有偏移</translation>
    </message>
    <message>
        <source>line %1, column %2: %3</source>
        <translation>第 %1 行第 %2 列：%3</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>第 %1 行：%2</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a hex digit</source>
        <translation>&apos;%1&apos; 不是十六进制数字</translation>
    </message>
    <message>
        <source>a line of a dump must have at most %1 characters</source>
        <translation>转储的一行最多 %1 个字符</translation>
    </message>
    <message>
        <source>a first line that may begin with an offset must have at most %1 characters</source>
        <translation>首行可能以偏移开头时，不得超过 %1 个字符</translation>
    </message>
    <message>
        <source>the first line may begin with an offset: the second must be complete within %1 characters</source>
        <translation>首行可能以偏移开头：第二行必须在 %1 个字符之内结束</translation>
    </message>
    <message>
        <source>/* must be closed by */</source>
        <translation>/* 必须以 */ 结束</translation>
    </message>
    <message>
        <source>%1 must be closed</source>
        <translation>%1 必须成对</translation>
    </message>
    <message>
        <source>{ must be closed by }</source>
        <translation>{ 必须以 } 结束</translation>
    </message>
    <message>
        <source>&apos;;&apos; must come after the closing }</source>
        <translation>&apos;;&apos; 必须在结束的 } 之后</translation>
    </message>
    <message>
        <source>} closes nothing</source>
        <translation>} 没有对应的开头</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must have 2 hex digits</source>
        <translation>&apos;%1&apos; 必须有 2 位十六进制数字</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must have 1 or 2 hex digits</source>
        <translation>&apos;%1&apos; 必须有 1 或 2 位十六进制数字</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must begin with \x, as the bytes before it</source>
        <translation>&apos;%1&apos; 必须以 \x 开头，与前面的字节一致</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must not begin with \x, as the bytes before it</source>
        <translation>&apos;%1&apos; 不得以 \x 开头，与前面的字节一致</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must begin with 0x in an array</source>
        <translation>数组中的 &apos;%1&apos; 必须以 0x 开头</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must have hex digits</source>
        <translation>&apos;%1&apos; 必须有十六进制数字</translation>
    </message>
    <message>
        <source>the array has %1, but its size is %2</source>
        <translation>数组有 %1，但其大小为 %2</translation>
    </message>
    <message>
        <source>a packet is a fragment; gqtool does not reassemble it</source>
        <translation>数据包是分片；gqtool 不重组分片</translation>
    </message>
    <message>
        <source>a packet needs %1 bytes, got %2; capture with tcpdump -s 0</source>
        <translation>数据包需要 %1 字节，实际为 %2；请用 tcpdump -s 0 抓包</translation>
    </message>
    <message>
        <source>the %1 header of a packet is malformed</source>
        <translation>数据包的 %1 头格式错误</translation>
    </message>
    <message>
        <source>a packet must have at most %1 bytes</source>
        <translation>数据包最多 %1 字节</translation>
    </message>
    <message>
        <source>%1 is unknown; the members are %2</source>
        <translation>%1 未知；可用成员为 %2</translation>
    </message>
    <message>
        <source>%1 occurs twice</source>
        <translation>%1 出现两次</translation>
    </message>
    <message>
        <source>behind must be a string of valid Unicode or {&quot;hex&quot;: DIGITS}</source>
        <translation>behind 必须是有效的 Unicode 字符串或 {&quot;hex&quot;: DIGITS}</translation>
    </message>
    <message>
        <source>as must be a form of &apos;gqtool decode --list&apos;</source>
        <translation>as 必须是 &apos;gqtool decode --list&apos; 中的格式</translation>
    </message>
    <message>
        <source>value must be an array</source>
        <translation>value 必须是数组</translation>
    </message>
    <message>
        <source>value cannot be written: the samples do not pack into 5000000 bytes</source>
        <translation>value 无法写入：采样值压缩后超过 5000000 字节</translation>
    </message>
    <message>
        <source>%1 is missing</source>
        <translation>缺少 %1</translation>
    </message>
    <message>
        <source>must be a JSON object</source>
        <translation>必须是 JSON 对象</translation>
    </message>
    <message>
        <source>must be a JSON object, got an array</source>
        <translation>必须是 JSON 对象，实际为数组</translation>
    </message>
    <message>
        <source>%1 must have at most %2 nested objects and arrays</source>
        <translation>%1 中的对象和数组最多嵌套 %2 层</translation>
    </message>
    <message>
        <source>Converts JSON to the bytes of a record, list, wave or frames, with the library&apos;s writers. The JSON has the
shape that &apos;gqtool decode --json&apos; prints: {&quot;as&quot;: FORM, &quot;value&quot;: ...}; &quot;behind&quot; holds bytes after the
record. Of a wave, &quot;stored&quot; takes precedence over &quot;samples&quot;; of frames, &quot;offset&quot;, &quot;form&quot;, &quot;content&quot;
and &quot;rest&quot; are ignored. Errors are listed with the path of the field; then nothing is printed and the exit
code is 1.

  gqtool decode --as intData --json 07000000 10270000 fa000000 01 02 | gqtool encode</source>
        <translation>用库的写入函数将 JSON 转换为记录、列表、波形或帧的字节。JSON 的结构与 &apos;gqtool decode --json&apos; 的输出相同：
{&quot;as&quot;: FORM, &quot;value&quot;: ...}；&quot;behind&quot; 为记录之后的字节。对于波形，&quot;stored&quot; 优先于 &quot;samples&quot;；对于帧，
&quot;offset&quot;、&quot;form&quot;、&quot;content&quot; 和 &quot;rest&quot; 不起作用。如果有错误，则列出各处错误及字段的路径，不输出任何字节，
退出码为 1。

  gqtool decode --as intData --json 07000000 10270000 fa000000 01 02 | gqtool encode</translation>
    </message>
    <message>
        <source>print the bytes themselves, not hex text</source>
        <translation>输出字节本身，而不是十六进制文本</translation>
    </message>
    <message>
        <source>list at most N errors</source>
        <translation>最多列出 N 处错误</translation>
    </message>
    <message>
        <source>JSON file; - or no FILE means standard input</source>
        <translation>JSON 文件；- 或省略 FILE 表示标准输入</translation>
    </message>
    <message>
        <source>--encoding must be an encoding that Qt knows, such as GBK, got &apos;%1&apos;</source>
        <translation>--encoding 必须是 Qt 支持的编码，如 GBK，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>convert texts of database records in encoding NAME, such as GBK or another that Qt knows (default: UTF-8)</source>
        <translation>数据库记录中文本的编码为 NAME：GBK 或 Qt 支持的其他编码（默认为 UTF-8）</translation>
    </message>
    <message>
        <source>ADDRESS must be dotted IPv4, four numbers from 0 to 255, got &apos;%1&apos;</source>
        <translation>ADDRESS 必须是点分 IPv4 地址，即 0 到 255 的四个数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>HOST:PORT is required, got &apos;%1&apos;</source>
        <translation>必须给出 HOST:PORT，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>HOST must be a name or a dotted IPv4 address, got &apos;%1&apos;</source>
        <translation>HOST 必须是主机名或点分 IPv4 地址，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>HOST must be a name or four numbers from 0 to 255, got &apos;%1&apos;</source>
        <translation>HOST 必须是主机名，或由点分隔的四个 0 到 255 的数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>PORT must be an integer from 1 to 65535, got &apos;%1&apos;</source>
        <translation>PORT 必须是 1 到 65535 的整数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>it has only IPv6 addresses (%1), and the frame protocol needs IPv4</source>
        <translation>该主机只有 IPv6 地址（%1），而帧协议需要 IPv4</translation>
    </message>
    <message>
        <source>cannot resolve &apos;%1&apos;: no answer within %2 ms</source>
        <translation>无法解析 &apos;%1&apos;：%2 毫秒内无应答</translation>
    </message>
    <message>
        <source>cannot resolve &apos;%1&apos;: %2</source>
        <translation>无法解析 &apos;%1&apos;：%2</translation>
    </message>
    <message>
        <source>a text of [%1] runs past the end of its payload</source>
        <translation>[%1] 的一个文本超出净荷末尾</translation>
    </message>
    <message>
        <source>the payload of [%1] is shorter than its form</source>
        <translation>[%1] 的净荷短于其格式的要求</translation>
    </message>
    <message>
        <source>the frame at byte %1 needs %2 bytes, got %3</source>
        <translation>字节 %1 处的帧需要 %2 字节，实际为 %3</translation>
    </message>
    <message>
        <source>a header needs %1 bytes, got %2</source>
        <translation>帧头需要 %1 字节，实际为 %2</translation>
    </message>
    <message>
        <source>length must be at most %1, got %2; a client would wait for the rest</source>
        <translation>length 最大为 %1，实际为 %2；客户端会等待其余字节</translation>
    </message>
    <message>
        <source>the last byte of a frame must be 16, got %1; a client drops this frame</source>
        <translation>帧的末字节必须是 16，实际为 %1；客户端会丢弃此帧</translation>
    </message>
    <message>
        <source>a client does not accept [%1]</source>
        <translation>客户端不接受 [%1]</translation>
    </message>
    <message>
        <source>good</source>
        <translation>正常</translation>
    </message>
    <message>
        <source>no frame found</source>
        <translation>没有找到帧</translation>
    </message>
    <message>
        <source>is unknown; the members are %1</source>
        <translation>未知；可用成员为 %1</translation>
    </message>
    <message>
        <source>is missing</source>
        <translation>缺失</translation>
    </message>
    <message>
        <source>must be an integer from 0 to %1</source>
        <translation>必须是 0 到 %1 的整数</translation>
    </message>
    <message>
        <source>must be a string of hex digits, two per byte</source>
        <translation>必须是十六进制数字字符串，每字节两位</translation>
    </message>
    <message>
        <source>must have %1, got %2</source>
        <translation>必须有 %1，实际为 %2</translation>
    </message>
    <message>
        <source>must be the size of the payload, %1, got %2</source>
        <translation>必须是净荷的字节数 %1，实际为 %2</translation>
    </message>
    <message>
        <source>must be an object</source>
        <translation>必须是对象</translation>
    </message>
    <message>
        <source>%1 integer: %2</source>
        <translation>%1 个整数：%2</translation>
    </message>
    <message>
        <source>%1 integers: %2</source>
        <translation>%1 个整数：%2</translation>
    </message>
    <message>
        <source>%1 text: %2</source>
        <translation>%1 个文本：%2</translation>
    </message>
    <message>
        <source>%1 texts: %2</source>
        <translation>%1 个文本：%2</translation>
    </message>
    <message>
        <source>%1; %2</source>
        <translation>%1；%2</translation>
    </message>
    <message>
        <source>%1 (not %2)</source>
        <translation>%1（不是 %2）</translation>
    </message>
    <message>
        <source>%1, sequence %2, %3</source>
        <translation>%1，序号 %2，%3</translation>
    </message>
    <message>
        <source>%1: no code</source>
        <translation>%1：没有错误码</translation>
    </message>
    <message>
        <source>%1: code %2</source>
        <translation>%1：错误码 %2</translation>
    </message>
    <message>
        <source>garbage, %1: %2</source>
        <translation>无效字节，%1：%2</translation>
    </message>
    <message>
        <source>wrong end 0x%1 instead of 0x16: %2</source>
        <translation>末字节错误，应为 0x16，实际为 0x%1：%2</translation>
    </message>
    <message>
        <source>bad length %1; a client would wait for the rest of it</source>
        <translation>长度错误，为 %1；客户端会等待其余字节</translation>
    </message>
    <message>
        <source>cut, %1 of %2 bytes: %3</source>
        <translation>帧不完整，只有 %2 字节中的 %1 字节：%3</translation>
    </message>
    <message>
        <source>cut, %1 of the %2 bytes of a header: %3</source>
        <translation>帧头不完整，只有 %2 字节中的 %1 字节：%3</translation>
    </message>
    <message>
        <source>in the records, %1</source>
        <translation>在记录中，%1</translation>
    </message>
    <message>
        <source>the payload has %1, but its form (%2) needs %3</source>
        <translation>净荷有 %1，但其格式（%2）需要 %3 字节</translation>
    </message>
    <message>
        <source>%1 read, of %2</source>
        <translation>已读取 %1，共 %2 字节</translation>
    </message>
    <message>
        <source>%1 read</source>
        <translation>已读取 %1</translation>
    </message>
    <message>
        <source>%1 more error; --max-errors N lists N</source>
        <translation>另有 %1 处错误；用 --max-errors N 可列出 N 处</translation>
    </message>
    <message>
        <source>%1 more errors; --max-errors N lists N</source>
        <translation>另有 %1 处错误；用 --max-errors N 可列出 N 处</translation>
    </message>
    <message>
        <source>more than %1 bytes</source>
        <translation>超过 %1 字节</translation>
    </message>
    <message>
        <source>read the bytes from FILE; - means standard input</source>
        <translation>从 FILE 读取字节；- 表示标准输入</translation>
    </message>
    <message>
        <source>read the bytes themselves, not hex text or a dump</source>
        <translation>输入是字节本身，而不是十六进制文本或转储</translation>
    </message>
    <message>
        <source>hex text or a hex dump, or - for standard input; reads what xxd, hexdump -C, od -A x -t x1, tcpdump -x and Wireshark print, C arrays, and digits in groups</source>
        <translation>十六进制文本或转储，- 表示标准输入；可以是 xxd、hexdump -C、od -A x -t x1、tcpdump -x 和 Wireshark 的输出、C 数组，以及分组的十六进制数字</translation>
    </message>
    <message>
        <source>standard input</source>
        <translation>标准输入</translation>
    </message>
    <message>
        <source>BYTES and --file exclude each other</source>
        <translation>BYTES 与 --file 不能同时使用</translation>
    </message>
    <message>
        <source>BYTES, --file FILE or - is required</source>
        <translation>必须给出 BYTES、--file FILE 或 -</translation>
    </message>
    <message>
        <source>--raw requires --file or -; BYTES on the command line are hex text</source>
        <translation>--raw 需要 --file 或 -；命令行上的 BYTES 是十六进制文本</translation>
    </message>
    <message>
        <source>--lang must be en or zh, got &apos;%1&apos;</source>
        <translation>--lang 必须是 en 或 zh，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>run a simulated station to test clients with</source>
        <translation>运行模拟站，供测试客户端</translation>
    </message>
    <message>
        <source>send a request and print the reply</source>
        <translation>发送请求并输出应答</translation>
    </message>
    <message>
        <source>find out why a server does not answer</source>
        <translation>查明服务器不应答的原因</translation>
    </message>
    <message>
        <source>print the fields of a record, list, wave or frames</source>
        <translation>输出记录、列表、波形或帧的字段</translation>
    </message>
    <message>
        <source>convert what decode --json prints to bytes</source>
        <translation>将 decode --json 的输出转换为字节</translation>
    </message>
    <message>
        <source>print the checksums and the hex text of bytes</source>
        <translation>输出字节的校验和及十六进制文本</translation>
    </message>
    <message>
        <source>print the moment and the text of a relative time code</source>
        <translation>输出相对时间码对应的时刻和文本</translation>
    </message>
    <message>
        <source>print the frames between clients and a station</source>
        <translation>输出客户端与站之间的帧</translation>
    </message>
    <message>
        <source>print a stored wave as text, table or picture</source>
        <translation>将存储的波形输出为文本、表格或图形</translation>
    </message>
    <message>
        <source>see &apos;gqtool --help&apos;</source>
        <translation>见 &apos;gqtool --help&apos;</translation>
    </message>
    <message>
        <source>unknown command &apos;%1&apos;</source>
        <translation>未知的命令 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>no command given</source>
        <translation>没有给出命令</translation>
    </message>
    <message>
        <source>COMMAND must be an integer from 0 to %1, got &apos;%2&apos;</source>
        <translation>COMMAND 必须是 0 到 %1 的整数，实际为 &apos;%2&apos;</translation>
    </message>
    <message>
        <source>NAME must be a letter followed by letters, digits, &apos;_&apos;, &apos;.&apos; or &apos;-&apos;, got &apos;%1&apos;</source>
        <translation>NAME 必须以字母开头，其后为字母、数字、&apos;_&apos;、&apos;.&apos; 或 &apos;-&apos;，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>REQUEST must be -, int, intPair, ints or hex, got &apos;%1&apos;</source>
        <translation>REQUEST 必须是 -、int、intPair、ints 或 hex，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>REPLY must be int, ints, bytes, strings or bytes:FORM, got &apos;%1&apos;</source>
        <translation>REPLY 必须是 int、ints、bytes、strings 或 bytes:FORM，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>REPLY has no form &apos;%1&apos;; gqtool decode --list prints the forms</source>
        <translation>REPLY 中的格式 &apos;%1&apos; 不存在；用 gqtool decode --list 列出各种格式</translation>
    </message>
    <message>
        <source>COMMAND %1 is also in line %2</source>
        <translation>COMMAND %1 在第 %2 行已有</translation>
    </message>
    <message>
        <source>NAME %1 is also in line %2</source>
        <translation>NAME %1 在第 %2 行已有</translation>
    </message>
    <message>
        <source>the server works</source>
        <translation>服务器工作正常</translation>
    </message>
    <message>
        <source>the host name has no IPv4 address</source>
        <translation>主机名没有 IPv4 地址</translation>
    </message>
    <message>
        <source>Check the spelling and the name server, or give the address as numbers.</source>
        <translation>请检查拼写和域名服务器，或直接给出数字地址。</translation>
    </message>
    <message>
        <source>the host is up, but nothing listens on this port</source>
        <translation>主机在线，但没有程序监听该端口</translation>
    </message>
    <message>
        <source>Check the port number, and that the server runs and listens on this address. A firewall that rejects looks the same.</source>
        <translation>请检查端口号，并确认服务器正在运行并监听该地址。拒绝连接的防火墙也有同样表现。</translation>
    </message>
    <message>
        <source>there is no way to the host</source>
        <translation>没有到达该主机的路由</translation>
    </message>
    <message>
        <source>Check the address, that the host is on, and the cable, netmask and gateway of this machine.</source>
        <translation>请检查地址、对端主机是否开机，以及本机的网线、子网掩码和网关。</translation>
    </message>
    <message>
        <source>the connection request was not answered</source>
        <translation>连接请求未得到响应</translation>
    </message>
    <message>
        <source>The host is down, a firewall drops the packets, or the server has stopped accepting connections. Try ping, then look at the firewall, then at the server.</source>
        <translation>主机没有开机，或防火墙丢弃了数据包，或服务器已不再接受连接。请先用 ping 测试，再检查防火墙，最后检查服务器。</translation>
    </message>
    <message>
        <source>the server accepts the connection but sends no greeting</source>
        <translation>服务器接受连接，但不发送问候帧</translation>
    </message>
    <message>
        <source>the server closes the connection</source>
        <translation>服务器关闭连接</translation>
    </message>
    <message>
        <source>another kind of server listens on this port</source>
        <translation>监听该端口的是另一种服务器</translation>
    </message>
    <message>
        <source>Check the port number.</source>
        <translation>请检查端口号。</translation>
    </message>
    <message>
        <source>Watch the link with &apos;gqtool trace&apos; to see all bytes. A gateway or serial converter on the way may damage them.</source>
        <translation>请用 &apos;gqtool trace&apos; 观察链路上的全部字节。途中的网关或串口转换器可能损坏了数据。</translation>
    </message>
    <message>
        <source>the server refuses this client by a greeting of 0 or below</source>
        <translation>服务器发送了 0 或负数的问候帧，拒绝本客户端</translation>
    </message>
    <message>
        <source>The server may be starting up, on standby, or not accept this client. Read its log.</source>
        <translation>服务器可能正在启动、处于备用状态，或不接受本客户端。请查看服务器的日志。</translation>
    </message>
    <message>
        <source>the server answers with an error code</source>
        <translation>服务器以错误码应答</translation>
    </message>
    <message>
        <source>the server does not answer the request</source>
        <translation>服务器不应答请求</translation>
    </message>
    <message>
        <source>%1, the first of %2 addresses</source>
        <translation>%1，共 %2 个地址，取第一个</translation>
    </message>
    <message>
        <source>no answer within %1 ms</source>
        <translation>%1 毫秒内无响应</translation>
    </message>
    <message>
        <source>cannot connect</source>
        <translation>无法连接</translation>
    </message>
    <message>
        <source>from %1</source>
        <translation>本端 %1</translation>
    </message>
    <message>
        <source>%1, nothing is sent yet</source>
        <translation>%1，尚未发送任何数据</translation>
    </message>
    <message>
        <source>cannot send the request</source>
        <translation>无法发送请求</translation>
    </message>
    <message>
        <source>nothing came within %1 ms</source>
        <translation>%1 毫秒内没有收到任何数据</translation>
    </message>
    <message>
        <source>the time-out of %1 ms ended</source>
        <translation>%1 毫秒的超时已到</translation>
    </message>
    <message>
        <source>more bytes came</source>
        <translation>又收到更多字节</translation>
    </message>
    <message>
        <source>an empty datagram</source>
        <translation>空数据报</translation>
    </message>
    <message>
        <source>the server closed the connection</source>
        <translation>服务器关闭了连接</translation>
    </message>
    <message>
        <source>the server reset the connection</source>
        <translation>服务器复位了连接</translation>
    </message>
    <message>
        <source>cannot receive</source>
        <translation>无法接收</translation>
    </message>
    <message>
        <source>%1; then %2</source>
        <translation>%1；然后%2</translation>
    </message>
    <message>
        <source>no greeting within %1 ms</source>
        <translation>%1 毫秒内没有问候帧</translation>
    </message>
    <message>
        <source>%1; it answers a request with %2</source>
        <translation>%1；对请求的应答为 %2</translation>
    </message>
    <message>
        <source>%1; after a request: %2</source>
        <translation>%1；请求之后：%2</translation>
    </message>
    <message>
        <source>an error frame with code %1</source>
        <translation>错误帧，错误码 %1</translation>
    </message>
    <message>
        <source>a frame with a payload of %1, at least 4 are needed</source>
        <translation>净荷为 %1的帧，至少需要 4 字节</translation>
    </message>
    <message>
        <source>a greeting of %1</source>
        <translation>问候帧，值为 %1</translation>
    </message>
    <message>
        <source>no frame, but %1</source>
        <translation>不是帧，而是 %1</translation>
    </message>
    <message>
        <source>%1, after %2 without a frame</source>
        <translation>%1，之前有 %2不属于任何帧</translation>
    </message>
    <message>
        <source>no complete frame: %1</source>
        <translation>没有完整的帧：%1</translation>
    </message>
    <message>
        <source>ok</source>
        <translation>正常</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>失败</translation>
    </message>
    <message>
        <source>bytes</source>
        <translation>字节</translation>
    </message>
    <message>
        <source>Finds out why a server does not answer. It tries the stages of a link, prints each with its time, and then the
cause and what to do about it:

  resolve      look the host name up
  connect      make the connection
  greeting     receive the server&apos;s greeting (not with --udp)
  systemState  request the server&apos;s state
  systemTime   request its clock

It stops at the first stage that fails. The causes are healthy, unresolved, refused, unreachable,
connect-timeout, silent, closed, foreign, bad-frame, not-greeted, error-frame and no-reply. The exit code is 0
only for healthy. If no greeting arrives, it sends one systemState request, to which servers of other
protocols react.</source>
        <translation>查明服务器不应答的原因。依次检查链路的各个阶段，输出每个阶段及其用时，最后给出原因和处理办法：

  resolve      解析主机名
  connect      建立连接
  greeting     接收服务器的问候帧（使用 --udp 时没有）
  systemState  请求服务器的状态
  systemTime   请求服务器的时钟

遇到第一个失败的阶段即停止。原因有 healthy、unresolved、refused、unreachable、connect-timeout、silent、
closed、foreign、bad-frame、not-greeted、error-frame 和 no-reply。只有原因为 healthy 时退出码才为 0。如果
没有收到问候帧，则发送一个 systemState 请求，使用其他协议的服务器会对此作出反应。</translation>
    </message>
    <message>
        <source>wait up to MS for each stage, twice for a missing greeting (default: 3000)</source>
        <translation>每个阶段最多等待 MS 毫秒，没有问候帧时加倍（默认为 3000）</translation>
    </message>
    <message>
        <source>send datagrams</source>
        <translation>使用数据报</translation>
    </message>
    <message>
        <source>stop after the greeting</source>
        <translation>收到问候帧后停止</translation>
    </message>
    <message>
        <source>print a JSON object</source>
        <translation>输出 JSON 对象</translation>
    </message>
    <message>
        <source>--greeting-only and --udp exclude each other: there is no greeting over UDP</source>
        <translation>--greeting-only 与 --udp 不能同时使用：UDP 没有问候帧</translation>
    </message>
    <message>
        <source>, got %1</source>
        <translation>，实际为 %1</translation>
    </message>
    <message>
        <source>%1 has a length of %2, but its slot holds at most %3 bytes</source>
        <translation>%1 的长度为 %2，但其槽位最多容纳 %3 字节</translation>
    </message>
    <message>
        <source>%1 has a length of %2, but only %3</source>
        <translation>%1 的长度为 %2，但只%3</translation>
    </message>
    <message>
        <source>the library&apos;s list reader continues at byte %1, because the previous text4 is not 2 bytes long</source>
        <translation>库的列表读取函数从字节 %1 继续，因为前一个 text4 的长度不是 2 字节</translation>
    </message>
    <message>
        <source>the reader needs %1 bytes, got %2; the missing ones may have any value</source>
        <translation>读取函数需要 %1 字节，实际为 %2；缺少的字节可为任意值</translation>
    </message>
    <message>
        <source>1 byte remains</source>
        <translation>剩 1 字节</translation>
    </message>
    <message>
        <source>%1 bytes remain</source>
        <translation>剩 %1 字节</translation>
    </message>
    <message>
        <source>%1 needs %2, but only %3</source>
        <translation>%1 需要 %2，但只%3</translation>
    </message>
    <message>
        <source>count</source>
        <translation>项数</translation>
    </message>
    <message>
        <source>the count of %1</source>
        <translation>%1 的项数</translation>
    </message>
    <message>
        <source>%1 is %2, but only %3</source>
        <translation>%1为 %2，但只%3</translation>
    </message>
    <message>
        <source>good, %1</source>
        <translation>正常，%1</translation>
    </message>
    <message>
        <source>not called: the library writes this form and has no reader for it</source>
        <translation>未调用，库只写入此格式，没有对应的读取函数</translation>
    </message>
    <message>
        <source>not called: the reader trusts this number and would allocate that much memory</source>
        <translation>未调用，读取函数不核对此数值，会按它分配内存</translation>
    </message>
    <message>
        <source>not called: more than %1 bytes; --library calls it</source>
        <translation>未调用，输入超过 %1 字节；用 --library 强制调用</translation>
    </message>
    <message>
        <source>too short, or a text is incomplete</source>
        <translation>字节数不足，或文本不完整</translation>
    </message>
    <message>
        <source>no count</source>
        <translation>没有项数</translation>
    </message>
    <message>
        <source>an item failed, and the list is empty again</source>
        <translation>某一项读取失败，列表已清空</translation>
    </message>
    <message>
        <source>too short</source>
        <translation>字节数不足</translation>
    </message>
    <message>
        <source>fewer bytes than a list must have or than its count needs</source>
        <translation>字节数少于列表的最小长度，或少于其项数所需</translation>
    </message>
    <message>
        <source>too short, or the bytes are incomplete</source>
        <translation>字节数不足，或字节内容不完整</translation>
    </message>
    <message>
        <source>no count, or fewer bytes than it needs</source>
        <translation>没有项数，或字节数少于项数所需</translation>
    </message>
    <message>
        <source>an item failed</source>
        <translation>某一项读取失败</translation>
    </message>
    <message>
        <source>fewer than 18 bytes, or an item is incomplete</source>
        <translation>不足 18 字节，或某一项不完整</translation>
    </message>
    <message>
        <source>the text is incomplete, or no byte follows it</source>
        <translation>文本不完整，或其后没有字节</translation>
    </message>
    <message>
        <source>no bytes</source>
        <translation>没有字节</translation>
    </message>
    <message>
        <source>the value is incomplete</source>
        <translation>值不完整</translation>
    </message>
    <message>
        <source>a text is incomplete</source>
        <translation>文本不完整</translation>
    </message>
    <message>
        <source>the value failed</source>
        <translation>值读取失败</translation>
    </message>
    <message>
        <source>a property failed</source>
        <translation>属性读取失败</translation>
    </message>
    <message>
        <source>no count, or an item failed</source>
        <translation>没有项数，或某一项读取失败</translation>
    </message>
    <message>
        <source>refused: head, marks or samples are incomplete</source>
        <translation>拒绝，波形头、标记或采样值不完整</translation>
    </message>
    <message>
        <source>a point, short form</source>
        <translation>测点，简要格式</translation>
    </message>
    <message>
        <source>a list of pointInfo</source>
        <translation>pointInfo 的列表</translation>
    </message>
    <message>
        <source>a point with a floating-point value</source>
        <translation>浮点值测点</translation>
    </message>
    <message>
        <source>a list of floatPoint</source>
        <translation>floatPoint 的列表</translation>
    </message>
    <message>
        <source>a point with an integer value, as the library reads it</source>
        <translation>整数值测点，库读取的格式</translation>
    </message>
    <message>
        <source>a list of intPoint</source>
        <translation>intPoint 的列表</translation>
    </message>
    <message>
        <source>a point with an integer value, as the library writes it, with switch0</source>
        <translation>整数值测点，库写入的格式，含 switch0</translation>
    </message>
    <message>
        <source>a list of intPointWritten</source>
        <translation>intPointWritten 的列表</translation>
    </message>
    <message>
        <source>a two-state point</source>
        <translation>两状态测点</translation>
    </message>
    <message>
        <source>a list of boolPoint</source>
        <translation>boolPoint 的列表</translation>
    </message>
    <message>
        <source>a point whose value is a blob</source>
        <translation>blob 值测点</translation>
    </message>
    <message>
        <source>a list of blobPoint</source>
        <translation>blobPoint 的列表</translation>
    </message>
    <message>
        <source>a float of a point</source>
        <translation>测点的浮点值</translation>
    </message>
    <message>
        <source>a list of floatRealData</source>
        <translation>floatRealData 的列表</translation>
    </message>
    <message>
        <source>a float without its point</source>
        <translation>不含测点的浮点值</translation>
    </message>
    <message>
        <source>a list of floatData</source>
        <translation>floatData 的列表</translation>
    </message>
    <message>
        <source>an integer of a point</source>
        <translation>测点的整数值</translation>
    </message>
    <message>
        <source>a list of intRealData</source>
        <translation>intRealData 的列表</translation>
    </message>
    <message>
        <source>an integer without its point</source>
        <translation>不含测点的整数值</translation>
    </message>
    <message>
        <source>a list of intData</source>
        <translation>intData 的列表</translation>
    </message>
    <message>
        <source>a bool of a point</source>
        <translation>测点的布尔值</translation>
    </message>
    <message>
        <source>a list of boolRealData</source>
        <translation>boolRealData 的列表</translation>
    </message>
    <message>
        <source>a bool without its point</source>
        <translation>不含测点的布尔值</translation>
    </message>
    <message>
        <source>a list of boolData</source>
        <translation>boolData 的列表</translation>
    </message>
    <message>
        <source>a value of any numeric point</source>
        <translation>任意数值测点的值</translation>
    </message>
    <message>
        <source>a list of pointRealData</source>
        <translation>pointRealData 的列表</translation>
    </message>
    <message>
        <source>a blob of a point without its bytes</source>
        <translation>测点的 blob，不含其字节</translation>
    </message>
    <message>
        <source>a list of blobDataInfo</source>
        <translation>blobDataInfo 的列表</translation>
    </message>
    <message>
        <source>a blob of a point</source>
        <translation>测点的 blob</translation>
    </message>
    <message>
        <source>a list of blobRealData</source>
        <translation>blobRealData 的列表</translation>
    </message>
    <message>
        <source>a list of blobs without their point</source>
        <translation>不含测点的 blob 的列表</translation>
    </message>
    <message>
        <source>a query</source>
        <translation>查询</translation>
    </message>
    <message>
        <source>a query with a text</source>
        <translation>带文本的查询</translation>
    </message>
    <message>
        <source>an event</source>
        <translation>事件</translation>
    </message>
    <message>
        <source>a list of eventInfo</source>
        <translation>eventInfo 的列表</translation>
    </message>
    <message>
        <source>the state of an event</source>
        <translation>事件的状态</translation>
    </message>
    <message>
        <source>a list of eventState</source>
        <translation>eventState 的列表</translation>
    </message>
    <message>
        <source>a tagged value, byte form</source>
        <translation>带类型的值，字节格式</translation>
    </message>
    <message>
        <source>the same, blob form</source>
        <translation>同上，blob 格式</translation>
    </message>
    <message>
        <source>a property of an object, byte form</source>
        <translation>对象的属性，字节格式</translation>
    </message>
    <message>
        <source>an object with its properties, byte form</source>
        <translation>对象及其属性，字节格式</translation>
    </message>
    <message>
        <source>the head of a node</source>
        <translation>节点头</translation>
    </message>
    <message>
        <source>a list of nodeHead</source>
        <translation>nodeHead 的列表</translation>
    </message>
    <message>
        <source>a communication entry</source>
        <translation>通信项</translation>
    </message>
    <message>
        <source>a list of commItem</source>
        <translation>commItem 的列表</translation>
    </message>
    <message>
        <source>a measurement with a floating-point value</source>
        <translation>浮点值测量项</translation>
    </message>
    <message>
        <source>a list of ycItem</source>
        <translation>ycItem 的列表</translation>
    </message>
    <message>
        <source>a signal of a few states</source>
        <translation>有若干状态的信号</translation>
    </message>
    <message>
        <source>a list of yxItem</source>
        <translation>yxItem 的列表</translation>
    </message>
    <message>
        <source>an item without a reading of its own</source>
        <translation>自身没有读数的项</translation>
    </message>
    <message>
        <source>a list of ydItem</source>
        <translation>ydItem 的列表</translation>
    </message>
    <message>
        <source>a signal with an integer value, as the library reads it</source>
        <translation>整数值信号，库读取的格式</translation>
    </message>
    <message>
        <source>a list of ybItem</source>
        <translation>ybItem 的列表</translation>
    </message>
    <message>
        <source>a signal with an integer value, as the library writes it, with flag1</source>
        <translation>整数值信号，库写入的格式，含 flag1</translation>
    </message>
    <message>
        <source>a list of ybItemWritten</source>
        <translation>ybItemWritten 的列表</translation>
    </message>
    <message>
        <source>a stored wave</source>
        <translation>存储的波形</translation>
    </message>
    <message>
        <source>must be UTF-8: the library writes this text as UTF-8</source>
        <translation>必须是 UTF-8：库以 UTF-8 写入此文本</translation>
    </message>
    <message>
        <source>must be an array</source>
        <translation>必须是数组</translation>
    </message>
    <message>
        <source>must have %1 items, got %2</source>
        <translation>必须有 %1 项，实际为 %2</translation>
    </message>
    <message>
        <source>must have at most %1 items, got %2</source>
        <translation>最多 %1 项，实际为 %2</translation>
    </message>
    <message>
        <source>is unknown; the fields are %1</source>
        <translation>未知；可用字段为 %1</translation>
    </message>
    <message>
        <source>must be an integer from %1 to %2</source>
        <translation>必须是 %1 到 %2 的整数</translation>
    </message>
    <message>
        <source>must have at most %1 bytes, got %2</source>
        <translation>最多 %1 字节，实际为 %2</translation>
    </message>
    <message>
        <source>must be the bits of a NaN</source>
        <translation>必须是 NaN 的位模式</translation>
    </message>
    <message>
        <source>must be a number, &quot;inf&quot;, &quot;-inf&quot;, &quot;-0&quot; or {&quot;nan&quot;: 8 DIGITS}</source>
        <translation>必须是数值、&quot;inf&quot;、&quot;-inf&quot;、&quot;-0&quot; 或 {&quot;nan&quot;: 8 DIGITS}</translation>
    </message>
    <message>
        <source>must fit into a float</source>
        <translation>必须在 float 范围内</translation>
    </message>
    <message>
        <source>must be a number, &quot;inf&quot;, &quot;-inf&quot;, &quot;-0&quot; or {&quot;nan&quot;: 16 DIGITS}</source>
        <translation>必须是数值、&quot;inf&quot;、&quot;-inf&quot;、&quot;-0&quot; 或 {&quot;nan&quot;: 16 DIGITS}</translation>
    </message>
    <message>
        <source>must have markCount items, %1, got %2</source>
        <translation>必须有 markCount 项，即 %1，实际为 %2</translation>
    </message>
    <message>
        <source>must be a string of valid Unicode or {&quot;hex&quot;: DIGITS}</source>
        <translation>必须是有效的 Unicode 字符串或 {&quot;hex&quot;: DIGITS}</translation>
    </message>
    <message>
        <source>must be a text that can be written in %1, or {&quot;hex&quot;: DIGITS}</source>
        <translation>必须是可用 %1 编码的文本，或 {&quot;hex&quot;: DIGITS}</translation>
    </message>
    <message>
        <source>a wave with marks needs at least %1 bytes of samples: with markCount %2, %3 bytes after the head, got %4</source>
        <translation>带标记的波形至少需要 %1 字节的采样值：markCount 为 %2 时，波形头之后需要 %3 字节，实际为 %4</translation>
    </message>
    <message>
        <source>zlib is out of memory</source>
        <translation>zlib 内存不足</translation>
    </message>
    <message>
        <source>the samples unpack to more than %1 bytes</source>
        <translation>采样值解压后超过 %1 字节</translation>
    </message>
    <message>
        <source>the zlib stream ends early, after %1 unpacked bytes</source>
        <translation>zlib 流提前结束，解压出 %1 字节</translation>
    </message>
    <message>
        <source>the zlib stream is invalid at its byte %1: %2</source>
        <translation>zlib 流在第 %1 字节处无效：%2</translation>
    </message>
    <message>
        <source>it needs a dictionary</source>
        <translation>需要字典</translation>
    </message>
    <message>
        <source>%1: line %2: %3 %4</source>
        <translation>%1：第 %2 行：%3 %4</translation>
    </message>
    <message>
        <source>%1: line %2: %3: %4</source>
        <translation>%1：第 %2 行：%3：%4</translation>
    </message>
    <message>
        <source>must have either reply or error</source>
        <translation>必须有且只有 reply 和 error 之一</translation>
    </message>
    <message>
        <source>must be a text of hex digits, two per byte</source>
        <translation>必须是十六进制数字文本，每字节两位</translation>
    </message>
    <message>
        <source>must be an array of integers</source>
        <translation>必须是整数数组</translation>
    </message>
    <message>
        <source>must be an array of texts</source>
        <translation>必须是文本数组</translation>
    </message>
    <message>
        <source>must be a text</source>
        <translation>必须是文本</translation>
    </message>
    <message>
        <source>must be a form of &apos;gqtool decode --list&apos;</source>
        <translation>必须是 &apos;gqtool decode --list&apos; 中的格式</translation>
    </message>
    <message>
        <source>cannot be written: the samples do not pack into 5000000 bytes</source>
        <translation>无法写入：采样值压缩后超过 5000000 字节</translation>
    </message>
    <message>
        <source>must be the name of a file</source>
        <translation>必须是文件名</translation>
    </message>
    <message>
        <source>not a regular file</source>
        <translation>不是普通文件</translation>
    </message>
    <message>
        <source>must have at least one frame</source>
        <translation>必须至少有一帧</translation>
    </message>
    <message>
        <source>must be &quot;echo&quot; or an object with as and value, or with one of %1</source>
        <translation>必须是 &quot;echo&quot;，或含 as 和 value 的对象，或含下列之一的对象：%1</translation>
    </message>
    <message>
        <source>line %1: %2 is there already, in line %3</source>
        <translation>第 %1 行：%2 已在第 %3 行出现</translation>
    </message>
    <message>
        <source>line %1: must nest at most %2 arrays and objects</source>
        <translation>第 %1 行：数组和对象最多嵌套 %2 层</translation>
    </message>
    <message>
        <source>must be a JSON object of &apos;gqtool trace --record&apos;</source>
        <translation>必须是 &apos;gqtool trace --record&apos; 写出的 JSON 对象</translation>
    </message>
    <message>
        <source>time must be a moment such as 2026-01-31T23:59:59.000000Z</source>
        <translation>time 必须是 2026-01-31T23:59:59.000000Z 这样的时刻</translation>
    </message>
    <message>
        <source>event must be a string</source>
        <translation>event 必须是字符串</translation>
    </message>
    <message>
        <source>from must be client or station</source>
        <translation>from 必须是 client 或 station</translation>
    </message>
    <message>
        <source>the frame is incomplete and cannot be replayed; remove the line</source>
        <translation>帧不完整，无法回放；请删除该行</translation>
    </message>
    <message>
        <source>the payload is cut: it has %1 of %2; record with &apos;gqtool trace --record&apos;</source>
        <translation>净荷被截断：%2中只有 %1；请用 &apos;gqtool trace --record&apos; 录制</translation>
    </message>
    <message>
        <source>%1 must be an integer from 0 to %2</source>
        <translation>%1 必须是 0 到 %2 的整数</translation>
    </message>
    <message>
        <source>%1 must be hex digits for %2</source>
        <translation>%1 必须是 %2的十六进制数字</translation>
    </message>
    <message>
        <source>command is missing</source>
        <translation>缺少 command</translation>
    </message>
    <message>
        <source>%1: line %2: %3</source>
        <translation>%1：第 %2 行：%3</translation>
    </message>
    <message>
        <source>%1: contains no request</source>
        <translation>%1：不含任何请求</translation>
    </message>
    <message>
        <source>listening on %1</source>
        <translation>正在监听 %1</translation>
    </message>
    <message>
        <source>cannot accept another client now: %1</source>
        <translation>暂时无法接受新的客户端：%1</translation>
    </message>
    <message>
        <source>down for %1 ms</source>
        <translation>停机 %1 毫秒</translation>
    </message>
    <message>
        <source>cannot listen on %1 again: %2</source>
        <translation>无法重新监听 %1：%2</translation>
    </message>
    <message>
        <source>up again</source>
        <translation>恢复运行</translation>
    </message>
    <message>
        <source>%1 connected</source>
        <translation>%1 已连接</translation>
    </message>
    <message>
        <source>%1: the requests and replies of all links exceed 256 MiB</source>
        <translation>%1：所有连接的请求和应答超过 256 MiB</translation>
    </message>
    <message>
        <source>closed</source>
        <translation>已关闭连接</translation>
    </message>
    <message>
        <source>%1 closed</source>
        <translation>%1 的连接已关闭</translation>
    </message>
    <message>
        <source>%1 gone</source>
        <translation>%1 已断开</translation>
    </message>
    <message>
        <source>%1 closed after %2 of its greeting</source>
        <translation>%1 的连接已关闭，问候帧只发送了 %2</translation>
    </message>
    <message>
        <source>gone before the answer</source>
        <translation>客户端在应答前已断开</translation>
    </message>
    <message>
        <source>closed after %1</source>
        <translation>发送 %1后已关闭连接</translation>
    </message>
    <message>
        <source>answered with %1</source>
        <translation>已应答 %1</translation>
    </message>
    <message>
        <source>not answered</source>
        <translation>未应答</translation>
    </message>
    <message>
        <source>%1 by UDP command 0x%2, %3: %4</source>
        <translation>%1 经 UDP，命令 0x%2，%3：%4</translation>
    </message>
    <message>
        <source>%1 command 0x%2, %3: %4</source>
        <translation>%1 命令 0x%2，%3：%4</translation>
    </message>
    <message>
        <source>cannot start a thread</source>
        <translation>无法启动线程</translation>
    </message>
    <message>
        <source>wait MS before sending it</source>
        <translation>发送前等待 MS 毫秒</translation>
    </message>
    <message>
        <source>send BYTES bytes, and the rest after a pause</source>
        <translation>先发送 BYTES 字节，停顿后再发送其余字节</translation>
    </message>
    <message>
        <source>send pieces of BYTES bytes with pauses between; 0 sends all at once</source>
        <translation>每次发送 BYTES 字节，每次之间停顿；0 表示一次发完</translation>
    </message>
    <message>
        <source>send its frames in one write, a single frame twice</source>
        <translation>各帧在一次写操作中发送；只有一帧时发送两遍</translation>
    </message>
    <message>
        <source>end its frames with a wrong byte</source>
        <translation>各帧的末字节错误</translation>
    </message>
    <message>
        <source>send nothing</source>
        <translation>什么也不发送</translation>
    </message>
    <message>
        <source>send at most BYTES bytes and close the connection</source>
        <translation>最多发送 BYTES 字节，然后关闭连接</translation>
    </message>
    <message>
        <source>send an error frame with CODE instead</source>
        <translation>改为发送错误码为 CODE 的错误帧</translation>
    </message>
    <message>
        <source>close every link instead and refuse new ones for MS</source>
        <translation>改为关闭所有链路，并在 MS 毫秒内拒绝新链路</translation>
    </message>
    <message>
        <source>cancel the faults of the lines above</source>
        <translation>取消以上各行设置的故障</translation>
    </message>
    <message>
        <source>a line must be &apos;greeting|reply|command COMMAND SELECTOR FAULT [VALUE]&apos;</source>
        <translation>每行必须是 &apos;greeting|reply|command COMMAND SELECTOR FAULT [VALUE]&apos;</translation>
    </message>
    <message>
        <source>a line must begin with greeting, reply or command, got &apos;%1&apos;</source>
        <translation>每行必须以 greeting、reply 或 command 开头，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>COMMAND must be an integer from 0 to 255, got &apos;%1&apos;</source>
        <translation>COMMAND 必须是 0 到 255 的整数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>FAULT must be one of %1, got &apos;%2&apos;</source>
        <translation>FAULT 必须是 %1 之一，实际为 &apos;%2&apos;</translation>
    </message>
    <message>
        <source>%1 takes one VALUE</source>
        <translation>%1 需要一个 VALUE</translation>
    </message>
    <message>
        <source>%1 takes no VALUE</source>
        <translation>%1 不带 VALUE</translation>
    </message>
    <message>
        <source>%1 must be a 4-byte integer, got &apos;%2&apos;</source>
        <translation>%1 必须是 4 字节整数，实际为 &apos;%2&apos;</translation>
    </message>
    <message>
        <source>%1 must be an integer from %2 to %3, got &apos;%4&apos;</source>
        <translation>%1 必须是 %2 到 %3 的整数，实际为 &apos;%4&apos;</translation>
    </message>
    <message>
        <source>SELECTOR must be a number from 1, a range such as 3-7, every, every/10 or a chance such as 2%, got &apos;%1&apos;</source>
        <translation>SELECTOR 必须是从 1 起的序号、3-7 这样的范围、every、every/10 或 2% 这样的概率，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>do not greet</source>
        <translation>不发送问候帧</translation>
    </message>
    <message>
        <source>delay each reply by MS (default: 0)</source>
        <translation>每个应答延迟 MS 毫秒（默认为 0）</translation>
    </message>
    <message>
        <source>send replies in pieces of BYTES</source>
        <translation>将应答按每块 BYTES 字节分块发送</translation>
    </message>
    <message>
        <source>never reply</source>
        <translation>不应答任何请求</translation>
    </message>
    <message>
        <source>end replies with a wrong byte</source>
        <translation>应答的末字节错误</translation>
    </message>
    <message>
        <source>close the connection instead of replying</source>
        <translation>收到请求后关闭连接，不应答</translation>
    </message>
    <message>
        <source>commands read: %1</source>
        <translation>已读取 %1 个命令</translation>
    </message>
    <message>
        <source>commands kept: %1</source>
        <translation>保留原有的 %1 个命令</translation>
    </message>
    <message>
        <source>listen on ADDRESS; 0.0.0.0 means all interfaces (default: 127.0.0.1)</source>
        <translation>监听地址；0.0.0.0 表示所有接口（默认为 127.0.0.1）</translation>
    </message>
    <message>
        <source>listen on PORT (default: 0, a free port)</source>
        <translation>监听端口（默认为 0，由系统选择空闲端口）</translation>
    </message>
    <message>
        <source>also answer datagrams on the same port, without a greeting</source>
        <translation>同一端口也应答数据报，但不发送问候帧</translation>
    </message>
    <message>
        <source>greet with NUMBER (default: 1)</source>
        <translation>问候帧的值（默认为 1）</translation>
    </message>
    <message>
        <source>wait MS between the frames of a reply, as clients lose frames that arrive together (default: 100)</source>
        <translation>同一应答的各帧间隔 MS 毫秒，因为客户端会丢失同时到达的帧（默认为 100）</translation>
    </message>
    <message>
        <source>answer as FILE says, see above; SIGHUP reads it again</source>
        <translation>按 FILE 中的命令应答，见上文；收到 SIGHUP 时重新读取</translation>
    </message>
    <message>
        <source>answer as the server did in FILE, which &apos;trace --record&apos; wrote</source>
        <translation>用 FILE 中录制的应答来应答，FILE 由 &apos;trace --record&apos; 生成</translation>
    </message>
    <message>
        <source>replay with the recorded delays</source>
        <translation>按录制的延迟回放</translation>
    </message>
    <message>
        <source>read faults from FILE, see above</source>
        <translation>从脚本 FILE 读取故障，见上文</translation>
    </message>
    <message>
        <source>select faults by chance; the same NUMBER selects the same (default: 1)</source>
        <translation>随机数种子，用于按概率选择故障；种子相同则结果相同（默认为 1）</translation>
    </message>
    <message>
        <source>print each line as a JSON object; the log stays text</source>
        <translation>每行输出为一个 JSON 对象；日志仍为文本</translation>
    </message>
    <message>
        <source>print only the first line; the log still gets all of them</source>
        <translation>只输出第一行；日志仍包含所有行</translation>
    </message>
    <message>
        <source>also write the lines, with their time, to FILE</source>
        <translation>各行同时写入日志 FILE，并带时间</translation>
    </message>
    <message>
        <source>cannot listen on %1:%2: %3</source>
        <translation>无法监听 %1:%2：%3</translation>
    </message>
    <message>
        <source>cannot wait for clients: %1</source>
        <translation>无法等待客户端：%1</translation>
    </message>
    <message>
        <source>CRC-16, low byte first</source>
        <translation>CRC-16，低字节在前</translation>
    </message>
    <message>
        <source>CRC-16, high byte first</source>
        <translation>CRC-16，高字节在前</translation>
    </message>
    <message>
        <source>byte sum</source>
        <translation>字节和</translation>
    </message>
    <message>
        <source>--check %1 needs at least %2 bytes, got %3</source>
        <translation>--check %1 至少需要 %2 字节，实际为 %3</translation>
    </message>
    <message>
        <source>%1: right, %2</source>
        <translation>校验正确：%1（%2）</translation>
    </message>
    <message>
        <source>%1: wrong, %2 of the preceding bytes is %3</source>
        <translation>校验错误：末尾为 %1（%2），应为 %3</translation>
    </message>
    <message>
        <source>Prints the checksums that telegrams use: CRC-16 (polynomial 0x8005 reflected, initial value 0xffff, as in
Modbus) in both byte orders, and the sum of the bytes modulo 256; and up to 4096 of the bytes as hex text.

  gqtool sum 01 03 00 00 00 0a
  gqtool sum --check crc 01 03 00 00 00 0a c5 cd</source>
        <translation>输出报文常用的校验和：两种字节次序的 CRC-16（多项式 0x8005，反射，初值 0xffff，与 Modbus 相同），以及各字节
之和模 256；并输出最多 4096 字节的十六进制文本。

  gqtool sum 01 03 00 00 00 0a
  gqtool sum --check crc 01 03 00 00 00 0a c5 cd</translation>
    </message>
    <message>
        <source>check that the bytes end in SUM: crc (low byte first, as in Modbus RTU), crc-high-first or sum (one byte); if not, the exit code is 1</source>
        <translation>检查末尾的校验和，SUM 为 crc（低字节在前，如 Modbus RTU）、crc-high-first（高字节在前）或 sum（一个字节）；不符时退出码为 1</translation>
    </message>
    <message>
        <source>--check must be crc, crc-high-first or sum, got &apos;%1&apos;</source>
        <translation>--check 必须是 crc、crc-high-first 或 sum，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>start of the day</source>
        <translation>当日起点</translation>
    </message>
    <message>
        <source>end of the day, 23:59:59</source>
        <translation>当日终点，23:59:59</translation>
    </message>
    <message>
        <source>start of the day N days before (code - 2)</source>
        <translation>N 天之前当天的起点（N = 时间码 - 2）</translation>
    </message>
    <message>
        <source>end of the day N days before (code - 50)</source>
        <translation>N 天之前当天的终点（N = 时间码 - 50）</translation>
    </message>
    <message>
        <source>same time N days before (code - 100)</source>
        <translation>N 天之前的同一钟点（N = 时间码 - 100）</translation>
    </message>
    <message>
        <source>start of the 1st of the month</source>
        <translation>当月 1 日起点</translation>
    </message>
    <message>
        <source>start of day N of the month (code - 150)</source>
        <translation>当月 N 日起点（N = 时间码 - 150）</translation>
    </message>
    <message>
        <source>end of the 1st of the month</source>
        <translation>当月 1 日终点</translation>
    </message>
    <message>
        <source>end of day N of the month (code - 200)</source>
        <translation>当月 N 日终点（N = 时间码 - 200）</translation>
    </message>
    <message>
        <source>start of the hour N hours ahead (302 - code)</source>
        <translation>N 小时之后该小时的起点（N = 302 - 时间码）</translation>
    </message>
    <message>
        <source>start of the hour</source>
        <translation>当前小时起点</translation>
    </message>
    <message>
        <source>end of the hour</source>
        <translation>当前小时终点</translation>
    </message>
    <message>
        <source>start of the hour N hours before (code - 302)</source>
        <translation>N 小时之前该小时的起点（N = 时间码 - 302）</translation>
    </message>
    <message>
        <source>end of the hour N hours before (code - 329)</source>
        <translation>N 小时之前该小时的终点（N = 时间码 - 329）</translation>
    </message>
    <message>
        <source>N hours before (code - 360)</source>
        <translation>N 小时之前（N = 时间码 - 360）</translation>
    </message>
    <message>
        <source>start of hour N of the day (code - 381)</source>
        <translation>当日 N 点该小时的起点（N = 时间码 - 381）</translation>
    </message>
    <message>
        <source>end of hour N of the day (code - 410)</source>
        <translation>当日 N 点该小时的终点（N = 时间码 - 410）</translation>
    </message>
    <message>
        <source>latest start of hour N up to the base (code - 435)</source>
        <translation>不晚于基准时间的最近一个 N 点的起点（N = 时间码 - 435）</translation>
    </message>
    <message>
        <source>latest end of hour N up to the base (code - 460)</source>
        <translation>不晚于基准时间的最近一个 N 点的终点（N = 时间码 - 460）</translation>
    </message>
    <message>
        <source>same time N days ahead (1050 - code)</source>
        <translation>N 天之后的同一钟点（N = 1050 - 时间码）</translation>
    </message>
    <message>
        <source>1 minute before</source>
        <translation>1 分钟之前</translation>
    </message>
    <message>
        <source>5 minutes before</source>
        <translation>5 分钟之前</translation>
    </message>
    <message>
        <source>10 minutes before</source>
        <translation>10 分钟之前</translation>
    </message>
    <message>
        <source>30 minutes before</source>
        <translation>30 分钟之前</translation>
    </message>
    <message>
        <source>start of the month</source>
        <translation>当月起点</translation>
    </message>
    <message>
        <source>end of the month</source>
        <translation>当月终点</translation>
    </message>
    <message>
        <source>same time N days before (code - 1050)</source>
        <translation>N 天之前的同一钟点（N = 时间码 - 1050）</translation>
    </message>
    <message>
        <source>start of month N of the year (code - 1100)</source>
        <translation>当年 N 月起点（N = 时间码 - 1100）</translation>
    </message>
    <message>
        <source>none: the end of a month before January</source>
        <translation>无：1 月之前的月份没有终点</translation>
    </message>
    <message>
        <source>end of month N of the year (code - 1120)</source>
        <translation>当年 N 月终点（N = 时间码 - 1120）</translation>
    </message>
    <message>
        <source>start of month N of the year before (code - 1140)</source>
        <translation>上一年 N 月起点（N = 时间码 - 1140）</translation>
    </message>
    <message>
        <source>end of month N of the year before (code - 1152)</source>
        <translation>上一年 N 月终点（N = 时间码 - 1152）</translation>
    </message>
    <message>
        <source>start of the year</source>
        <translation>当年起点</translation>
    </message>
    <message>
        <source>end of the year, 23:59:59</source>
        <translation>当年终点，23:59:59</translation>
    </message>
    <message>
        <source>start of the year N years before (code - 1302)</source>
        <translation>N 年之前该年的起点（N = 时间码 - 1302）</translation>
    </message>
    <message>
        <source>end of the year N years before (code - 1400)</source>
        <translation>N 年之前该年的终点（N = 时间码 - 1400）</translation>
    </message>
    <message>
        <source>same time N years ahead (code - 1600)</source>
        <translation>N 年之后的同一钟点（N = 时间码 - 1600）</translation>
    </message>
    <message>
        <source>minute N of the day (code - 2001)</source>
        <translation>当日第 N 分钟（N = 时间码 - 2001）</translation>
    </message>
    <message>
        <source>none (%1)</source>
        <translation>无（%1）</translation>
    </message>
    <message>
        <source>code</source>
        <translation>时间码</translation>
    </message>
    <message>
        <source>base</source>
        <translation>基准时间</translation>
    </message>
    <message>
        <source>moment</source>
        <translation>时刻</translation>
    </message>
    <message>
        <source>text</source>
        <translation>文本</translation>
    </message>
    <message>
        <source>english</source>
        <translation>英文</translation>
    </message>
    <message>
        <source>%1 to %2: %3</source>
        <translation>%1 到 %2：%3</translation>
    </message>
    <message>
        <source>All other codes have no moment (0).</source>
        <translation>其他时间码没有对应的时刻（0）。</translation>
    </message>
    <message>
        <source>Prints the moment and the text of a relative time code.

A moment is printed as local time and, in brackets, as seconds since 1970; &quot;none&quot; means that the code has no
moment. The ranges of codes for the texts differ in some places from those for the moments.</source>
        <translation>输出相对时间码对应的时刻和文本。

时刻以本地时间输出，括号中是 1970 年以来的秒数；“无”表示该时间码没有对应的时刻。文本与时刻的时间码区间在个别
地方不一致。</translation>
    </message>
    <message>
        <source>the code</source>
        <translation>相对时间码</translation>
    </message>
    <message>
        <source>print all families of codes with their first and last moment and text</source>
        <translation>列出所有类别的时间码，以及每类首末两个时间码的时刻和文本</translation>
    </message>
    <message>
        <source>count from TIME, in seconds since 1970 or as &quot;2021-03-31 10:20:30&quot; in local time (default: now)</source>
        <translation>以 TIME 为基准时间：1970 年以来的秒数，或 &quot;2021-03-31 10:20:30&quot; 这样的本地时间（默认为当前时间）</translation>
    </message>
    <message>
        <source>use time zone ZONE, for example Europe/Berlin (default: the system&apos;s)</source>
        <translation>使用时区 ZONE，例如 Asia/Shanghai（默认为系统时区）</translation>
    </message>
    <message>
        <source>print JSON: one object for the code, or one per family of codes</source>
        <translation>输出 JSON：该时间码的一个对象，或每类时间码各一个对象</translation>
    </message>
    <message>
        <source>one CODE or --list is required</source>
        <translation>必须给出 CODE 或 --list，二者取其一</translation>
    </message>
    <message>
        <source>CODE must be a 4-byte integer, got &apos;%1&apos;</source>
        <translation>CODE 必须是 4 字节整数，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--zone must be a known time zone, got &apos;%1&apos;</source>
        <translation>--zone 必须是已知的时区，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--base must be a moment from 1970 to 2106, got &apos;%1&apos;</source>
        <translation>--base 必须是 1970 年到 2106 年的时刻，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>cannot write to %1, the trace continues without it: %2</source>
        <translation>无法写入 %1，继续跟踪但不再写入该文件：%2</translation>
    </message>
    <message>
        <source>%1 exists; if no other trace is writing it, remove it</source>
        <translation>%1 已存在；如果没有其他 trace 正在写入，请删除它</translation>
    </message>
    <message>
        <source>datagram from %1 lost: %2</source>
        <translation>来自 %1 的数据报丢失：%2</translation>
    </message>
    <message>
        <source>datagram of %1 lost: %2</source>
        <translation>%1的数据报丢失：%2</translation>
    </message>
    <message>
        <source>the station is unreachable: %1</source>
        <translation>站不可达：%1</translation>
    </message>
    <message>
        <source>listening on %1 for %2</source>
        <translation>正在监听 %1，转发到 %2</translation>
    </message>
    <message>
        <source>connected from %1</source>
        <translation>客户端 %1 已连接</translation>
    </message>
    <message>
        <source>connections: %1, frames to the station: %2, back: %3, faults: %4</source>
        <translation>%1 个连接，发往站 %2 帧，来自站 %3 帧，%4 处错误</translation>
    </message>
    <message>
        <source>the client ended its stream</source>
        <translation>客户端关闭了发送方向</translation>
    </message>
    <message>
        <source>the station ended its stream</source>
        <translation>站关闭了发送方向</translation>
    </message>
    <message>
        <source>the client broke the connection: %1</source>
        <translation>客户端异常断开连接：%1</translation>
    </message>
    <message>
        <source>the station broke the connection: %1</source>
        <translation>站异常断开连接：%1</translation>
    </message>
    <message>
        <source>Relays between clients and a station and prints a line for each frame: time, number of the connection, -&gt; for
a frame from the client or &lt;- for one from the station, and its contents. All bytes are passed on unchanged and
immediately, even if they are not frames. SIGINT or SIGTERM ends it.

  gqtool trace --listen 5001 127.0.0.1:5000

Clients then connect to port 5001. --pcap writes a capture of all connections, as if the clients had talked to
the station directly. Wireshark can open it while it is being written:

  gqtool trace --listen 5001 --pcap FILE 127.0.0.1:5000
  tshark -r FILE -d tcp.port==5000,gqframe

--record writes a file from which &apos;gqtool station --replay&apos; answers as the station did.</source>
        <translation>在客户端与站之间转发数据，每帧输出一行：时间、连接编号、方向（-&gt; 表示来自客户端，&lt;- 表示来自站）和内容。
所有字节都原样、立即转发，即使它们不是帧。用 SIGINT 或 SIGTERM 结束。

  gqtool trace --listen 5001 127.0.0.1:5000

此时客户端应连接端口 5001。--pcap 将所有连接写成抓包文件，如同客户端与站直接通信；写入过程中即可用
Wireshark 打开：

  gqtool trace --listen 5001 --pcap FILE 127.0.0.1:5000
  tshark -r FILE -d tcp.port==5000,gqframe

--record 生成录制文件，供 &apos;gqtool station --replay&apos; 像原来的站一样应答。</translation>
    </message>
    <message>
        <source>listen on PORT; 0 means a free port</source>
        <translation>监听端口；0 表示由系统选择空闲端口</translation>
    </message>
    <message>
        <source>listen on ADDRESS (default: 127.0.0.1)</source>
        <translation>监听地址（默认为 127.0.0.1）</translation>
    </message>
    <message>
        <source>relay datagrams instead of connections</source>
        <translation>转发数据报，而不是连接</translation>
    </message>
    <message>
        <source>also write all packets to FILE, for Wireshark</source>
        <translation>所有数据包同时写入抓包文件 FILE，供 Wireshark 使用</translation>
    </message>
    <message>
        <source>also write the lines of --json to FILE, with up to 4 MiB of each payload</source>
        <translation>--json 的各行同时写入录制文件 FILE，每个净荷最多 4 MiB</translation>
    </message>
    <message>
        <source>show commands and payloads by the map of commands in FILE</source>
        <translation>按 FILE 中的命令表显示命令和净荷</translation>
    </message>
    <message>
        <source>print each line as a JSON object, with up to 65536 bytes of a payload in hex</source>
        <translation>每行输出为一个 JSON 对象，净荷为十六进制，最多 65536 字节</translation>
    </message>
    <message>
        <source>the station: a name or a dotted IPv4 address, and a port</source>
        <translation>站：主机名或点分十进制 IPv4 地址，加端口</translation>
    </message>
    <message>
        <source>cannot listen on %1: %2</source>
        <translation>无法监听 %1：%2</translation>
    </message>
    <message>
        <source>%1 is the address of the trace itself</source>
        <translation>%1 是本工具自己的地址</translation>
    </message>
    <message>
        <source>cannot relay: %1</source>
        <translation>无法转发：%1</translation>
    </message>
    <message>
        <source>raw</source>
        <translation>原始</translation>
    </message>
    <message>
        <source>quantised</source>
        <translation>量化</translation>
    </message>
    <message>
        <source>plain</source>
        <translation>普通</translation>
    </message>
    <message>
        <source>the head needs %1 bytes, got %2</source>
        <translation>波形头需要 %1 字节，实际为 %2</translation>
    </message>
    <message>
        <source>the compressed block of %1 cannot be unpacked: %2</source>
        <translation>%1的压缩块无法解压：%2</translation>
    </message>
    <message>
        <source>0x%1: %2, compressed</source>
        <translation>0x%1：%2，压缩</translation>
    </message>
    <message>
        <source>0x%1: %2</source>
        <translation>0x%1：%2</translation>
    </message>
    <message>
        <source>%1, the scale</source>
        <translation>%1，比例系数</translation>
    </message>
    <message>
        <source>%1, the offset</source>
        <translation>%1，偏移量</translation>
    </message>
    <message>
        <source>size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>1 byte</source>
        <translation>1 字节</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <translation>%1 字节</translation>
    </message>
    <message>
        <source>marks</source>
        <translation>标记</translation>
    </message>
    <message>
        <source>samples</source>
        <translation>采样值</translation>
    </message>
    <message>
        <source>%1, but sampleCount is %2</source>
        <translation>%1，但 sampleCount 为 %2</translation>
    </message>
    <message>
        <source>not finite</source>
        <translation>非有限值</translation>
    </message>
    <message>
        <source>%1, NaN or infinite; not included below</source>
        <translation>%1，NaN 或无穷大；不计入以下各项</translation>
    </message>
    <message>
        <source>minimum</source>
        <translation>最小值</translation>
    </message>
    <message>
        <source>maximum</source>
        <translation>最大值</translation>
    </message>
    <message>
        <source>mean</source>
        <translation>平均值</translation>
    </message>
    <message>
        <source>%1: %2 of %3 samples</source>
        <translation>%1：%2/%3 个采样值</translation>
    </message>
    <message>
        <source>Prints the head and marks of a stored wave, and the number, minimum, maximum and mean of its samples. NaN and
infinite samples are only counted. If the library&apos;s reader refuses the wave, the head and the reason are
printed, and the exit code is 1.

  gqtool wave --raw --file WAVE --svg wave.svg
  gqtool wave --raw --file WAVE --svg part.svg --from 5000 --to 5999

In the picture, dashed lines show those marks that are valid sample numbers.</source>
        <translation>输出存储的波形的波形头和标记，以及采样值的个数、最小值、最大值和平均值。NaN 和无穷大只计个数。如果库的
读取函数拒绝该波形，则输出波形头和拒绝的原因，退出码为 1。

  gqtool wave --raw --file WAVE --svg wave.svg
  gqtool wave --raw --file WAVE --svg part.svg --from 5000 --to 5999

图中的虚线表示值为有效采样序号的标记。</translation>
    </message>
    <message>
        <source>--from and --to require samples, the wave has none</source>
        <translation>--from 和 --to 需要采样值，而该波形没有</translation>
    </message>
    <message>
        <source>--%1 must be at most %2, the last sample, got %3</source>
        <translation>--%1 最大为 %2，即最后一个采样值，实际为 %3</translation>
    </message>
    <message>
        <source>draw the samples to FILE, with every spike; - means standard output</source>
        <translation>将采样值绘制成 SVG 图，写入 FILE，保留每个尖峰；- 表示标准输出</translation>
    </message>
    <message>
        <source>write and draw the samples from NUMBER on (default: 0, the first)</source>
        <translation>从序号 NUMBER 的采样值开始写入和绘制（默认为 0，即第一个）</translation>
    </message>
    <message>
        <source>write and draw the samples up to NUMBER (default: the last)</source>
        <translation>到序号 NUMBER 的采样值为止（默认为最后一个）</translation>
    </message>
    <message>
        <source>--json, --csv - and --svg - exclude each other: each prints to standard output</source>
        <translation>--json、--csv - 和 --svg - 不能同时使用：它们都写到标准输出</translation>
    </message>
    <message>
        <source>--from and --to require --csv or --svg</source>
        <translation>--from 和 --to 需要 --csv 或 --svg</translation>
    </message>
    <message>
        <source>--from must be at most --to, got %1 and %2</source>
        <translation>--from 不得大于 --to，实际为 %1 和 %2</translation>
    </message>
    <message>
        <source>%1: refused: %2</source>
        <translation>%1：库拒绝该波形：%2</translation>
    </message>
    <message>
        <source>%1 samples</source>
        <translation>%1 个采样值</translation>
    </message>
    <message>
        <source>samples %1 to %2 of %3</source>
        <translation>采样值 %1 到 %2，共 %3 个</translation>
    </message>
    <message>
        <source>cannot write to standard output: %1</source>
        <translation>无法写入标准输出：%1</translation>
    </message>
    <message>
        <source>Address already in use</source>
        <translation>地址已被使用</translation>
    </message>
    <message>
        <source>Address family not supported by protocol</source>
        <translation>协议不支持该地址族</translation>
    </message>
    <message>
        <source>Bad address</source>
        <translation>错误的地址</translation>
    </message>
    <message>
        <source>Bad file descriptor</source>
        <translation>错误的文件描述符</translation>
    </message>
    <message>
        <source>Broken pipe</source>
        <translation>管道已断开</translation>
    </message>
    <message>
        <source>Cannot allocate memory</source>
        <translation>无法分配内存</translation>
    </message>
    <message>
        <source>Cannot assign requested address</source>
        <translation>无法分配请求的地址</translation>
    </message>
    <message>
        <source>Connection refused</source>
        <translation>连接被拒绝</translation>
    </message>
    <message>
        <source>Connection reset by peer</source>
        <translation>连接被对端复位</translation>
    </message>
    <message>
        <source>Connection timed out</source>
        <translation>连接超时</translation>
    </message>
    <message>
        <source>Device or resource busy</source>
        <translation>设备或资源忙</translation>
    </message>
    <message>
        <source>Disk quota exceeded</source>
        <translation>超出磁盘配额</translation>
    </message>
    <message>
        <source>File name too long</source>
        <translation>文件名过长</translation>
    </message>
    <message>
        <source>File too large</source>
        <translation>文件过大</translation>
    </message>
    <message>
        <source>Input/output error</source>
        <translation>输入/输出错误</translation>
    </message>
    <message>
        <source>Interrupted system call</source>
        <translation>系统调用被中断</translation>
    </message>
    <message>
        <source>Invalid argument</source>
        <translation>无效的参数</translation>
    </message>
    <message>
        <source>Is a directory</source>
        <translation>是一个目录</translation>
    </message>
    <message>
        <source>Message too long</source>
        <translation>消息过长</translation>
    </message>
    <message>
        <source>Network is down</source>
        <translation>网络已断开</translation>
    </message>
    <message>
        <source>Network is unreachable</source>
        <translation>网络不可达</translation>
    </message>
    <message>
        <source>No buffer space available</source>
        <translation>没有可用的缓冲区空间</translation>
    </message>
    <message>
        <source>No route to host</source>
        <translation>没有到主机的路由</translation>
    </message>
    <message>
        <source>No space left on device</source>
        <translation>设备上没有剩余空间</translation>
    </message>
    <message>
        <source>No such device or address</source>
        <translation>没有该设备或地址</translation>
    </message>
    <message>
        <source>No such file or directory</source>
        <translation>没有该文件或目录</translation>
    </message>
    <message>
        <source>Not a directory</source>
        <translation>不是目录</translation>
    </message>
    <message>
        <source>Operation in progress</source>
        <translation>操作正在进行</translation>
    </message>
    <message>
        <source>Operation not permitted</source>
        <translation>不允许的操作</translation>
    </message>
    <message>
        <source>Permission denied</source>
        <translation>权限不足</translation>
    </message>
    <message>
        <source>Read-only file system</source>
        <translation>只读文件系统</translation>
    </message>
    <message>
        <source>Resource temporarily unavailable</source>
        <translation>资源暂时不可用</translation>
    </message>
    <message>
        <source>Success</source>
        <translation>成功</translation>
    </message>
    <message>
        <source>Too many levels of symbolic links</source>
        <translation>符号链接层数过多</translation>
    </message>
    <message>
        <source>Too many open files</source>
        <translation>打开的文件过多</translation>
    </message>
    <message>
        <source>Too many open files in system</source>
        <translation>系统中打开的文件过多</translation>
    </message>
    <message>
        <source>Transport endpoint is not connected</source>
        <translation>传输端点尚未连接</translation>
    </message>
    <message>
        <source>Name or service not known</source>
        <translation>未知的名称或服务</translation>
    </message>
    <message>
        <source>No address associated with hostname</source>
        <translation>该主机名没有对应的地址</translation>
    </message>
    <message>
        <source>Non-recoverable failure in name resolution</source>
        <translation>域名解析失败，无法恢复</translation>
    </message>
    <message>
        <source>Temporary failure in name resolution</source>
        <translation>域名解析暂时失败</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>Unknown error</source>
        <translation>未知错误</translation>
    </message>
    <message>
        <source>incorrect data check</source>
        <translation>数据校验不正确</translation>
    </message>
    <message>
        <source>incorrect header check</source>
        <translation>头部校验不正确</translation>
    </message>
    <message>
        <source>incorrect length check</source>
        <translation>长度校验不正确</translation>
    </message>
    <message>
        <source>invalid bit length repeat</source>
        <translation>无效的位长重复</translation>
    </message>
    <message>
        <source>invalid block type</source>
        <translation>无效的块类型</translation>
    </message>
    <message>
        <source>invalid code -- missing end-of-block</source>
        <translation>无效的编码：缺少块结束标记</translation>
    </message>
    <message>
        <source>invalid code lengths set</source>
        <translation>无效的码长集</translation>
    </message>
    <message>
        <source>invalid distance code</source>
        <translation>无效的距离码</translation>
    </message>
    <message>
        <source>invalid distance too far back</source>
        <translation>无效的距离，回溯过远</translation>
    </message>
    <message>
        <source>invalid distances set</source>
        <translation>无效的距离集</translation>
    </message>
    <message>
        <source>invalid literal/length code</source>
        <translation>无效的字面值/长度码</translation>
    </message>
    <message>
        <source>invalid literal/lengths set</source>
        <translation>无效的字面值/长度集</translation>
    </message>
    <message>
        <source>invalid stored block lengths</source>
        <translation>无效的存储块长度</translation>
    </message>
    <message>
        <source>invalid window size</source>
        <translation>无效的窗口大小</translation>
    </message>
    <message>
        <source>too many length or distance symbols</source>
        <translation>长度或距离符号过多</translation>
    </message>
    <message>
        <source>unknown compression method</source>
        <translation>未知的压缩方法</translation>
    </message>
    <message>
        <source>sample</source>
        <translation>采样序号</translation>
    </message>
    <message>
        <source>no samples</source>
        <translation>没有采样值</translation>
    </message>
    <message>
        <source>no finite samples</source>
        <translation>没有有限的采样值</translation>
    </message>
    <message>
        <source>Usage: %1</source>
        <translation>用法：%1</translation>
    </message>
    <message>
        <source>%1:</source>
        <translation>%1：</translation>
    </message>
    <message>
        <source>Usage: gqtool COMMAND [OPTIONS] [ARGUMENTS]

Commands:
%1
&apos;gqtool COMMAND --help&apos; describes a command, &apos;gqtool --version&apos; prints the version.
--lang LANG prints texts in LANG: en or zh (default: by the locale).
Exit codes: 0 success, 1 the request failed or the data is invalid, 2 wrong usage.</source>
        <translation>用法：gqtool COMMAND [选项] [参数]

命令：
%1
用 &apos;gqtool COMMAND --help&apos; 查看命令的说明，用 &apos;gqtool --version&apos; 查看版本。
--lang LANG 指定消息的语言：en 或 zh（默认按区域设置）。
退出码：0 成功，1 请求失败或数据无效，2 用法错误。</translation>
    </message>
    <message>
        <source>%1 must be hex digits, two for each of its bytes</source>
        <translation>%1 必须是十六进制数字，每字节两位</translation>
    </message>
    <message>
        <source>not enough memory</source>
        <translation>内存不足</translation>
    </message>
    <message>
        <source>first byte</source>
        <translation>首字节</translation>
    </message>
    <message>
        <source>(any byte)</source>
        <translation>（任意字节）</translation>
    </message>
    <message>
        <source>%1 unpacked</source>
        <translation>解压出 %1</translation>
    </message>
    <message>
        <source>(zlib stream)</source>
        <translation>（zlib 流）</translation>
    </message>
    <message>
        <source>(gqLib_en.qm not found)</source>
        <translation>（未找到 gqLib_en.qm）</translation>
    </message>
    <message>
        <source>the text column must have at most %1 characters, one per byte, got &apos;%2&apos;%3</source>
        <translation>文本列最多 %1 个字符，每字节一个，实际为 &apos;%2&apos;%3</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is binary; use xxd without -b</source>
        <translation>&apos;%1&apos; 是二进制；请用不带 -b 的 xxd</translation>
    </message>
    <message>
        <source>&apos;%1&apos; has its bytes in reverse order, as the text column shows; use xxd without -e</source>
        <translation>由文本列可见 &apos;%1&apos; 的字节次序相反；请用不带 -e 的 xxd</translation>
    </message>
    <message>
        <source>&apos;%1&apos; may have its bytes in reverse order, as of xxd -e; use xxd -g 1</source>
        <translation>&apos;%1&apos; 的字节次序可能相反，例如 xxd -e 的输出；请用 xxd -g 1</translation>
    </message>
    <message>
        <source>%1: byte %2: the table leaves out %3 after the list</source>
        <translation>%1：字节 %2：列表之后的 %3不在表中</translation>
    </message>
    <message>
        <source>%1: byte %2: %3</source>
        <translation>%1：字节 %2：%3</translation>
    </message>
    <message>
        <source>%1: byte %2: more than %3 bytes after the record</source>
        <translation>%1：字节 %2：记录之后超过 %3 字节</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1，%2</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1 次%2</translation>
    </message>
    <message>
        <source>value</source>
        <translation>值</translation>
    </message>
    <message>
        <source>array</source>
        <translation>数组</translation>
    </message>
    <message>
        <source>object</source>
        <translation>对象</translation>
    </message>
    <message>
        <source>object key</source>
        <translation>对象的键</translation>
    </message>
    <message>
        <source>object separator</source>
        <translation>键后的冒号</translation>
    </message>
    <message>
        <source>true literal</source>
        <translation>true</translation>
    </message>
    <message>
        <source>false literal</source>
        <translation>false</translation>
    </message>
    <message>
        <source>null literal</source>
        <translation>null</translation>
    </message>
    <message>
        <source>string literal</source>
        <translation>字符串</translation>
    </message>
    <message>
        <source>number literal</source>
        <translation>数值</translation>
    </message>
    <message>
        <source>&apos;[&apos;, &apos;{&apos;, or a literal</source>
        <translation>值</translation>
    </message>
    <message>
        <source>end of input</source>
        <translation>输入结束</translation>
    </message>
    <message>
        <source>invalid BOM; must be 0xEF 0xBB 0xBF if given</source>
        <translation>BOM 无效，只能是 0xEF 0xBB 0xBF</translation>
    </message>
    <message>
        <source>invalid literal</source>
        <translation>字面值无效</translation>
    </message>
    <message>
        <source>invalid number; expected digit after &apos;-&apos;</source>
        <translation>数值无效，&apos;-&apos; 之后应为数字</translation>
    </message>
    <message>
        <source>invalid number; expected digit after &apos;.&apos;</source>
        <translation>数值无效，&apos;.&apos; 之后应为数字</translation>
    </message>
    <message>
        <source>invalid number; expected &apos;+&apos;, &apos;-&apos;, or digit after exponent</source>
        <translation>数值无效，指数符号 e 之后应为 &apos;+&apos;、&apos;-&apos; 或数字</translation>
    </message>
    <message>
        <source>invalid number; expected digit after exponent sign</source>
        <translation>数值无效，指数的正负号之后应为数字</translation>
    </message>
    <message>
        <source>invalid string: &apos;\u&apos; must be followed by 4 hex digits</source>
        <translation>字符串无效，&apos;\u&apos; 之后应为 4 位十六进制数字</translation>
    </message>
    <message>
        <source>invalid string: forbidden character after backslash</source>
        <translation>字符串无效，反斜杠之后的字符不合法</translation>
    </message>
    <message>
        <source>invalid string: ill-formed UTF-8 byte</source>
        <translation>字符串无效，有不合法的 UTF-8 字节</translation>
    </message>
    <message>
        <source>invalid string: missing closing quote</source>
        <translation>字符串缺少结束引号</translation>
    </message>
    <message>
        <source>invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF</source>
        <translation>字符串无效，代理码元 U+D800..U+DBFF 之后应为 U+DC00..U+DFFF</translation>
    </message>
    <message>
        <source>invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF</source>
        <translation>字符串无效，代理码元 U+DC00..U+DFFF 之前应为 U+D800..U+DBFF</translation>
    </message>
    <message>
        <source>invalid string: control character %1 must be escaped to %2</source>
        <translation>字符串无效，控制字符 %1 应转义为 %2</translation>
    </message>
    <message>
        <source>line %1, column %2: syntax error while parsing %3 - unexpected %4; expected %5</source>
        <translation>第 %1 行第 %2 列：JSON 语法错误，正在解析%3，应为：%5，实际为：%4</translation>
    </message>
    <message>
        <source>line %1, column %2: syntax error while parsing %3 - %4; last read: &apos;%5&apos;</source>
        <translation>第 %1 行第 %2 列：JSON 语法错误，正在解析%3，%4，最后读到：&apos;%5&apos;</translation>
    </message>
    <message>
        <source>line %1, column %2: syntax error while parsing %3 - %4; last read: &apos;%5&apos;; expected %6</source>
        <translation>第 %1 行第 %2 列：JSON 语法错误，正在解析%3，%4，最后读到：&apos;%5&apos;，应为：%6</translation>
    </message>
    <message>
        <source>number overflow parsing &apos;%1&apos;</source>
        <translation>数值 &apos;%1&apos; 超出范围</translation>
    </message>
    <message>
        <source>must not contain a zero byte</source>
        <translation>不得含有零字节</translation>
    </message>
    <message>
        <source>write the samples as a table to FILE, &apos;sample,value&apos; in its first line; - means standard output</source>
        <translation>将采样值以表格形式写入 FILE，首行为 &apos;sample,value&apos;；- 表示标准输出</translation>
    </message>
    <message>
        <source>%1 or %2</source>
        <translation>%1 或 %2</translation>
    </message>
    <message>
        <source>no complete frame</source>
        <translation>没有完整的帧</translation>
    </message>
    <message>
        <source>a frame that ends in 0x%1 instead of 0x16</source>
        <translation>帧的末字节是 0x%1，而不是 0x16</translation>
    </message>
    <message>
        <source>%1, after %2 of %3 elements</source>
        <translation>%1，此前已收到 %3 项中的 %2 项</translation>
    </message>
    <message>
        <source>%1, after %2 of the %3 bytes of a header</source>
        <translation>%1，此前已收到帧头 %3 字节中的 %2 字节</translation>
    </message>
    <message>
        <source>%1: the header has a length of %2, and a client takes at most %3</source>
        <translation>%1：帧头中的长度为 %2，而客户端最多接受 %3</translation>
    </message>
    <message>
        <source>%1, after %2 of the %3 bytes of the frame</source>
        <translation>%1，此前已收到该帧 %3 字节中的 %2 字节</translation>
    </message>
    <message>
        <source>the request itself came back, as from an echo server</source>
        <translation>收到的是请求本身，对端可能是回显服务器</translation>
    </message>
    <message>
        <source>a datagram without a complete frame</source>
        <translation>数据报中没有完整的帧</translation>
    </message>
    <message>
        <source>invalid %1 in %2</source>
        <translation>%2不是有效的 %1</translation>
    </message>
    <message>
        <source>%1 of the %2 bytes are left over after the %3</source>
        <translation>%3 之后，%2 字节中还剩 %1 字节</translation>
    </message>
    <message>
        <source>request %1 to %2: warning: %3</source>
        <translation>发往 %2 的请求 %1：警告：%3</translation>
    </message>
    <message>
        <source>request %1 to %2 %3</source>
        <translation>发往 %2 的请求 %1 %3</translation>
    </message>
    <message>
        <source> (try gqtool probe %1)</source>
        <translation>（可用 gqtool probe %1 查明原因）</translation>
    </message>
    <message>
        <source>warnings</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>the first: %1</source>
        <translation>第一个：%1</translation>
    </message>
    <message>
        <source>got none</source>
        <translation>实际没有给出</translation>
    </message>
    <message>
        <source>got &apos;%1&apos;</source>
        <translation>实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>%1, %2; line %3 of the map has the request form %4</source>
        <translation>%1，%2；命令表第 %3 行的请求格式为 %4</translation>
    </message>
    <message>
        <source>text %1 of %2 needs %3 bytes, but only %4 of the payload&apos;s %5 bytes remain</source>
        <translation>%2 个文本中的第 %1 个需要 %3 字节，但净荷的 %5 字节只剩 %4 字节</translation>
    </message>
    <message>
        <source>reply of command %1, expected %2</source>
        <translation>应答的命令为 %1，应为 %2</translation>
    </message>
    <message>
        <source>reply of sequence %1, expected %2</source>
        <translation>应答的序号为 %1，应为 %2</translation>
    </message>
    <message>
        <source>a line must be &apos;COMMAND NAME REQUEST REPLY&apos;, got &apos;%1&apos;</source>
        <translation>一行必须是 &apos;COMMAND NAME REQUEST REPLY&apos;，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>%1 more error</source>
        <translation>另有 %1 处错误</translation>
    </message>
    <message>
        <source>%1 more errors</source>
        <translation>另有 %1 处错误</translation>
    </message>
    <message>
        <source>The server may be hung, or serve one client at a time and have one already, or this is the port of another service. If it is only slow, use a longer --timeout.</source>
        <translation>服务器可能已卡死，或一次只服务一个客户端且正忙，或该端口属于其他服务。如果服务器只是响应慢，请增大 --timeout。</translation>
    </message>
    <message>
        <source>The server may refuse this address, be at its limit of connections, or have crashed. Read its log. Or this is the port of another service, such as one with TLS.</source>
        <translation>服务器可能拒绝来自本机地址的连接，或连接数已满，或已崩溃。请查看服务器的日志。也可能该端口属于其他服务，例如使用 TLS 的服务。</translation>
    </message>
    <message>
        <source>what comes is not a whole, correct frame, or not the reply to the request</source>
        <translation>收到的不是完整、正确的帧，或不是对该请求的应答</translation>
    </message>
    <message>
        <source>Look the code up in the server&apos;s documentation.</source>
        <translation>请在服务器的文档中查找该错误码。</translation>
    </message>
    <message>
        <source>The server may be busy: try a longer --timeout.</source>
        <translation>服务器可能繁忙：请增大 --timeout。</translation>
    </message>
    <message>
        <source>The server may have crashed on this request, or not accept it. Read its log.</source>
        <translation>服务器可能因该请求而崩溃，或不接受该请求。请查看服务器的日志。</translation>
    </message>
    <message>
        <source>%1 If the server lacks this command, use --greeting-only.</source>
        <translation>%1如果服务器没有此命令，请使用 --greeting-only。</translation>
    </message>
    <message>
        <source>%1 If it means an unknown command, the link itself works.</source>
        <translation>%1如果该错误码表示未知命令，则链路本身正常。</translation>
    </message>
    <message>
        <source>%1 Or a firewall drops the datagrams, or the server does not run, or it lacks this command.</source>
        <translation>%1也可能防火墙丢弃了数据报，或服务器未运行，或服务器没有此命令。</translation>
    </message>
    <message>
        <source>The greeting comes late: use a --timeout of more than %1 ms.</source>
        <translation>问候帧来得晚：请把 --timeout 设为大于 %1 毫秒。</translation>
    </message>
    <message>
        <source>%1; a greeting of %2 came late, after %3 ms</source>
        <translation>%1；值为 %2 的问候帧在 %3 毫秒后才到达</translation>
    </message>
    <message>
        <source>The server answers another request, or sends more than one frame for one. A client takes such a frame for the reply.</source>
        <translation>服务器应答的是另一个请求，或对一个请求发送了多个帧。客户端会把这样的帧当作应答。</translation>
    </message>
    <message>
        <source>no frame: its header has a length of %1, and a client takes at most %2</source>
        <translation>不是帧：帧头中的长度为 %1，而客户端最多接受 %2</translation>
    </message>
    <message>
        <source>%1: the input is empty</source>
        <translation>%1：输入为空</translation>
    </message>
    <message>
        <source>--command must be a name or number of the map, got &apos;%1&apos;</source>
        <translation>--command 必须是命令表中的名称或编号，实际为 &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--csv requires a list of records, and the replies to %1 are none</source>
        <translation>--csv 需要记录的列表，而对 %1 的应答不是列表</translation>
    </message>
    <message>
        <source>write a list as a table to FILE, field names in its first line; - means standard output; of frames, the lists in the replies to --command</source>
        <translation>将列表以表格形式写入 FILE，首行为字段名；- 表示标准输出；对于帧，写入的是 --command 所指命令的应答中的列表</translation>
    </message>
    <message>
        <source>with --csv and frames, write the records of replies to COMMAND, a name or number of the map</source>
        <translation>与 --csv 和帧同用时，写入对 COMMAND 的应答中的记录，COMMAND 是命令表中的名称或编号</translation>
    </message>
    <message>
        <source>decode frames with payloads of up to BYTES (default: 4194304), which takes memory</source>
        <translation>解析净荷不超过 BYTES 字节的帧（默认为 4194304），会占用内存</translation>
    </message>
    <message>
        <source>--udp, --request, --payload, --map and --max-payload require --as frames</source>
        <translation>--udp、--request、--payload、--map 和 --max-payload 需要 --as frames</translation>
    </message>
    <message>
        <source>with --as frames, --csv requires --map FILE and --command COMMAND, and no --request</source>
        <translation>与 --as frames 一起使用时，--csv 需要 --map FILE 和 --command COMMAND，且不能有 --request</translation>
    </message>
    <message>
        <source>--command requires --as frames</source>
        <translation>--command 需要 --as frames</translation>
    </message>
    <message>
        <source>&apos;%1&apos; must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd</source>
        <translation>&apos;%1&apos; 必须是两个十六进制数字表示的一个字节；请用 od -A x -t x1、hexdump -C 或 xxd</translation>
    </message>
    <message>
        <source>; use xxd without -e</source>
        <translation>；请用不带 -e 的 xxd</translation>
    </message>
    <message>
        <source>offset %1 may be octal or decimal; use od -A x -t x1</source>
        <translation>偏移 %1 可能是八进制或十进制；请用 od -A x -t x1</translation>
    </message>
    <message>
        <source>; offsets must be hexadecimal, as of od -A x -t x1</source>
        <translation>；偏移必须是十六进制，例如 od -A x -t x1 的输出</translation>
    </message>
    <message>
        <source>byte 0x%1 is not a hex digit</source>
        <translation>字节 0x%1 不是十六进制数字</translation>
    </message>
    <message>
        <source>[%1] is longer than --max-payload</source>
        <translation>[%1] 超出 --max-payload</translation>
    </message>
    <message>
        <source>%1 is a %2 capture; convert it with &apos;tshark -r %3 -x -o tcp.desegment_tcp_streams:FALSE&apos;</source>
        <translation>%1 是 %2 抓包文件；请用 &apos;tshark -r %3 -x -o tcp.desegment_tcp_streams:FALSE&apos; 转换</translation>
    </message>
    <message>
        <source>%1: UTF-16 text; save it as UTF-8 or ASCII</source>
        <translation>%1：UTF-16 文本；请另存为 UTF-8 或 ASCII</translation>
    </message>
    <message>
        <source>%1 looks like hex text or a hex dump, which is read without --raw</source>
        <translation>%1 看起来是十六进制文本或十六进制转储，读取时不要加 --raw</translation>
    </message>
    <message>
        <source>; use --raw for raw bytes</source>
        <translation>；原始字节请用 --raw</translation>
    </message>
    <message>
        <source>some texts are not UTF-8; --encoding NAME, such as GBK, converts them</source>
        <translation>有些文本不是 UTF-8；可用 --encoding NAME（例如 GBK）转换</translation>
    </message>
    <message>
        <source>%1: line %2: %3 replaces the ready-made command %4</source>
        <translation>%1：第 %2 行：%3 取代预置命令 %4</translation>
    </message>
    <message>
        <source>must be an integer from 0 to 254 or a text such as &quot;0x35&quot;</source>
        <translation>必须是 0 到 254 的整数或 &quot;0x35&quot; 这样的文本</translation>
    </message>
    <message>
        <source>cannot write to %1, the station continues without it: %2</source>
        <translation>无法写入 %1，模拟站继续运行但不再写入：%2</translation>
    </message>
    <message>
        <source>Runs a simulated station: a frame server that greets clients, answers the ready-made commands and serves
lists. It prints a line with its address, then a line per connection and request, until it is stopped.

Commands: 1 systemState (1 until setState), 2 systemTime (its clock), 3 clear (resets state and clock),
5 setTime (sets its clock to the first integer, in seconds since 1970), 6 setState.

Commands defined by the station, each with one integer as payload. 0x20 to 0x22 take a count: up to 1000
integers, 100000 bytes or 48 strings. 0x23 takes a code and answers with an error frame. 0x30 to 0x38 serve a
small point database, as byte lists that hold records: 0x30 all points in short form, 0x31 to 0x34 float, int,
bool and blob points, 0x35 current values, 0x36 a stored wave, 0x37 events, 0x38 an object. 0x40 to 0x45 serve
a front-end processor in the same way: 0x40 node heads, 0x41 communication entries, 0x42 YcItem, 0x43 YxItem,
0x44 YdItem and 0x45 YbItem.

An unknown command is answered with error -10, an invalid payload with error -11.

--commands FILE replaces all commands by those of a JSON file, except 1, 2, 3, 5 and 6 if it has none of them:
  {&quot;commands&quot;: [{&quot;command&quot;: &quot;0x35&quot;, &quot;reply&quot;: {&quot;as&quot;: &quot;pointRealDatas&quot;, &quot;value&quot;: [...]}},
                {&quot;command&quot;: 64, &quot;payload&quot;: &quot;07000000&quot;, &quot;reply&quot;: {&quot;int&quot;: 42}},
                {&quot;command&quot;: 80, &quot;error&quot;: -7}]}
The first entry whose command and payload fit the request answers it; without &quot;payload&quot; any fits. A reply is
&quot;echo&quot;, one of these forms, or an array of them, a frame each:
  &quot;as&quot; and &quot;value&quot;  a record or list as for &apos;gqtool encode&apos;, sent as a byte list
  &quot;int&quot;, &quot;ints&quot;, &quot;strings&quot;, &quot;bytes&quot; (hex digits)
  &quot;payload&quot; (hex digits), &quot;file&quot; (its name)  the bytes of a payload as they are
SIGHUP reads the file again. If it has errors, they are printed, and the commands stay as they were.

--replay FILE gives each request the reply that a recorded server sent to the same command and payload, in the
recorded order; the last one is repeated. The payload of commands 1 to 3, the client&apos;s clock, is ignored.
Greetings are the recorded ones. A request that was not recorded is answered with error -10.

A script defines which greetings and replies go wrong. It has one fault per line, and comments from #:
  greeting|reply|command COMMAND SELECTOR FAULT [VALUE]
Greetings, replies, and the replies to each command are numbered from 1, over all connections and datagrams.
SELECTOR is a number, a range such as 3-7, every, every/10 (the 10th, 20th ...) or a chance such as 2%, which
--seed repeats. Faults add up; if several lines set the same fault, the last one counts. Options apply before
the script. The faults:
%1Over UDP there is no greeting, each piece is a datagram, and close-after only cuts the reply.
</source>
        <translation>运行模拟站，即一个帧服务器：向客户端发送问候帧，应答预置命令，并提供列表。先输出一行监听地址，此后每个连接和
每个请求各输出一行，直到被终止。

命令：1 systemState（收到 setState 之前为 1）、2 systemTime（站的时钟）、3 clear（复位状态和时钟）、
5 setTime（将时钟设为第一个整数，即 1970 年以来的秒数）、6 setState。

模拟站自定义的命令，净荷均为一个整数。0x20 到 0x22 的净荷为项数：最多 1000 个整数、100000 字节或 48 个文本。
0x23 的净荷为错误码，站返回含该错误码的错误帧。0x30 到 0x38 提供一个小型测点数据库，应答为含有记录的
字节列表：0x30 所有测点的简要格式，0x31 到 0x34 浮点、整数、布尔和 blob 测点，0x35 当前值，0x36 存储的波形，
0x37 事件，0x38 对象。0x40 到 0x45 同样提供前置机的数据：0x40 节点头，0x41 通信项，0x42 YcItem，
0x43 YxItem，0x44 YdItem，0x45 YbItem。

对未知命令返回错误码 -10，对无效净荷返回错误码 -11。

--commands FILE 以 JSON 文件中的命令取代所有命令；文件中没有 1、2、3、5、6 时，它们保持不变：
  {&quot;commands&quot;: [{&quot;command&quot;: &quot;0x35&quot;, &quot;reply&quot;: {&quot;as&quot;: &quot;pointRealDatas&quot;, &quot;value&quot;: [...]}},
                {&quot;command&quot;: 64, &quot;payload&quot;: &quot;07000000&quot;, &quot;reply&quot;: {&quot;int&quot;: 42}},
                {&quot;command&quot;: 80, &quot;error&quot;: -7}]}
请求由命令和净荷都相符的第一项应答；没有 &quot;payload&quot; 的项适用于任何净荷。应答为 &quot;echo&quot;、下列形式之一，或由它们
组成的数组（每个元素一帧）：
  &quot;as&quot; 和 &quot;value&quot;  记录或列表，写法与 &apos;gqtool encode&apos; 的输入相同，作为字节列表发送
  &quot;int&quot;、&quot;ints&quot;、&quot;strings&quot;、&quot;bytes&quot;（十六进制数字）
  &quot;payload&quot;（十六进制数字）、&quot;file&quot;（文件名）  净荷的全部字节，原样发送
收到 SIGHUP 时重新读取该文件。如果文件有错误，则输出错误，命令保持不变。

--replay FILE 用录制的应答来应答：命令和净荷相同的请求，依次得到录制时服务器的各个应答，用完后重复最后一个。
命令 1 到 3 的净荷是客户端的时钟，不参与比较。问候帧也来自录制文件。对没有录制过的请求返回错误码 -10。

脚本规定哪些问候帧和应答出现故障。每行一个故障，# 之后为注释：
  greeting|reply|command COMMAND SELECTOR FAULT [VALUE]
问候帧、应答以及对每个命令的应答分别从 1 开始编号，所有连接和数据报统一计数。SELECTOR 可以是序号、范围（如
3-7）、every、every/10（第 10、20……个）或概率（如 2%），概率的结果可用 --seed 重现。多行故障同时生效；多行
设置同一种故障时，以最后一行为准。选项先于脚本生效。故障有：
%1使用 UDP 时没有问候帧，每块是一个数据报，close-after 只截短应答。
</translation>
    </message>
    <message>
        <source> (does not match the request: %1, sequence %2)</source>
        <translation>（与请求不符：%1，序号 %2）</translation>
    </message>
    <message>
        <source>the client closed the connection (reset)</source>
        <translation>客户端关闭了连接（复位）</translation>
    </message>
    <message>
        <source>with --record, write up to BYTES of each payload (default: 4194304)</source>
        <translation>与 --record 同用时，每个净荷最多写入 BYTES 字节（默认为 4194304）</translation>
    </message>
    <message>
        <source>%1 takes only %2, got &apos;%3&apos;</source>
        <translation>%1 只带 %2，实际为 &apos;%3&apos;</translation>
    </message>
    <message>
        <source>length in the wrong byte order, %1 instead of %2; a client would wait for the rest of it</source>
        <translation>长度的字节序错误，%1 应为 %2；客户端会等待其余字节</translation>
    </message>
    <message>
        <source>the payload has %1 bytes, and the count of its form (%2) is %3</source>
        <translation>净荷有 %1 字节，而其格式（%2）的项数为 %3</translation>
    </message>
    <message>
        <source>the payload has %1 bytes, but its form (%2) with a count of %3 needs %4</source>
        <translation>净荷有 %1 字节，但其格式（%2）的项数为 %3，需要 %4 字节</translation>
    </message>
    <message>
        <source>The error frame has no code that says why. Read the server&apos;s log.</source>
        <translation>错误帧中没有说明原因的错误码。请查看服务器的日志。</translation>
    </message>
    <message>
        <source>The server sends frames that were not requested. A client drops such a frame if it comes together with a reply, and otherwise takes it for the next reply.</source>
        <translation>服务器发送了未经请求的帧。若这样的帧与应答同时到达，客户端会将其丢弃；否则会把它当作下一个应答。</translation>
    </message>
    <message>
        <source>%1; then another frame: %2</source>
        <translation>%1；随后又有一帧：%2</translation>
    </message>
</context>
</TS>
