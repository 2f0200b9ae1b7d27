<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>OverlayRoot</name>
    <message numerus="yes">
        <source>%n command(s)</source>
        <translation>
            <numerusform>%n command</numerusform>
            <numerusform>%n commands</numerusform>
        </translation>
    </message>
</context>
</TS>
