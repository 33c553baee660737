<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>QObject</name>
    <message>
        <source>当前时间</source>
        <translation>now</translation>
    </message>
    <message>
        <source>当日0点</source>
        <translation>start of the day</translation>
    </message>
    <message>
        <source>当日终点</source>
        <translation>end of the day</translation>
    </message>
    <message>
        <source>天之前的0点</source>
        <translation> day(s) before, at 00:00</translation>
    </message>
    <message>
        <source>天之前终点</source>
        <translation> day(s) before, at its end</translation>
    </message>
    <message>
        <source>天之前</source>
        <translation> day(s) before</translation>
    </message>
    <message>
        <source>号</source>
        <translation> (day of the month)</translation>
    </message>
    <message>
        <source>号终点</source>
        <translation> (day of the month), at its end</translation>
    </message>
    <message>
        <source>当时零点</source>
        <translation>start of the hour</translation>
    </message>
    <message>
        <source>当时终点</source>
        <translation>end of the hour</translation>
    </message>
    <message>
        <source>时0点</source>
        <translation> hour(s) before, at its start</translation>
    </message>
    <message>
        <source>时终点</source>
        <translation> hour(s) before, at its end</translation>
    </message>
    <message>
        <source>时之前</source>
        <translation> hour(s) before</translation>
    </message>
    <message>
        <source>点</source>
        <translation> o'clock</translation>
    </message>
    <message>
        <source>点终点</source>
        <translation> o'clock, end of the hour</translation>
    </message>
    <message>
        <source>当月0点</source>
        <translation>start of the month</translation>
    </message>
    <message>
        <source>当月终点</source>
        <translation>end of the month</translation>
    </message>
    <message>
        <source>上月0点</source>
        <translation>start of last month</translation>
    </message>
    <message>
        <source>上月终点</source>
        <translation>end of last month</translation>
    </message>
    <message>
        <source>前</source>
        <translation>back </translation>
    </message>
    <message>
        <source>月零点</source>
        <translation> (month), at its start</translation>
    </message>
    <message>
        <source>月终点</source>
        <translation> (month), at its end</translation>
    </message>
    <message>
        <source>月同期起点</source>
        <translation>start of the same period of the month</translation>
    </message>
    <message>
        <source>月同期终点</source>
        <translation>end of the same period of the month</translation>
    </message>
    <message>
        <source>月之前</source>
        <translation> month(s) before</translation>
    </message>
    <message>
        <source>月0点</source>
        <translation> (month), at its start</translation>
    </message>
    <message>
        <source>去年</source>
        <translation>last year, </translation>
    </message>
    <message>
        <source>当年0点</source>
        <translation>start of the year</translation>
    </message>
    <message>
        <source>当年终点</source>
        <translation>end of the year</translation>
    </message>
    <message>
        <source>去年0点</source>
        <translation>start of last year</translation>
    </message>
    <message>
        <source>去年终点</source>
        <translation>end of last year</translation>
    </message>
    <message>
        <source>0点0分</source>
        <translation>00:00</translation>
    </message>
</context>
</TS>
