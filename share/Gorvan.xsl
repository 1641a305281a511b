<?xml version="1.0" encoding="UTF-8"?>
<!--
  Gorvan.xsl: shows a Gorvan catalog export as a page in a web browser.
  The export names this file in its first line and Gorvan puts a copy beside
  every XML export. One section per disc with its totals, then its folders,
  each with its files in a table.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8" indent="yes"/>

  <xsl:template match="/Gorvan">
    <html>
      <head>
        <title>Gorvan catalog export</title>
        <style>
          body { font-family: sans-serif; margin: 1.5em; color: #222; }
          h1 { font-size: 1.4em; margin-bottom: 0.2em; }
          .when { color: #666; margin-top: 0; }
          .disc { border: 1px solid #bbb; border-radius: 6px; padding: 0.6em 1em; margin: 1.2em 0; }
          .disc h2 { font-size: 1.2em; margin: 0.2em 0 0.4em 0; }
          .totals td { padding: 0 1.2em 0 0; }
          .totals th { text-align: left; font-weight: normal; color: #666; padding-right: 0.4em; }
          .folder { margin: 0.8em 0 0 0; }
          .folder h3 { font-size: 1em; margin: 0.4em 0; font-family: monospace; }
          .folder .counts { color: #666; font-size: 0.9em; font-family: sans-serif; font-weight: normal; }
          table.files { border-collapse: collapse; width: 100%; }
          table.files th { text-align: left; border-bottom: 1px solid #999; padding: 2px 8px; }
          table.files td { padding: 2px 8px; border-bottom: 1px solid #eee; vertical-align: top; }
          table.files td.size, table.files th.size { text-align: right; white-space: nowrap; }
          .notes { white-space: pre-wrap; color: #444; }
          .summary { color: #444; }
        </style>
      </head>
      <body>
        <h1>Gorvan catalog export</h1>
        <p class="when">
          Exported <xsl:value-of select="@ExtractDate"/> by Gorvan <xsl:value-of select="@Version"/>:
          <xsl:value-of select="count(Cd)"/> disc(s),
          <xsl:value-of select="count(Cd/Directory)"/> folder(s),
          <xsl:value-of select="count(Cd/Directory/File)"/> file(s).
        </p>
        <xsl:apply-templates select="Cd"/>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="Cd">
    <div class="disc">
      <h2><xsl:value-of select="Name"/></h2>
      <table class="totals">
        <tr>
          <th>Last scanned</th><td><xsl:value-of select="LastScannedDate"/></td>
          <th>Total size</th><td><xsl:call-template name="bytes"><xsl:with-param name="n" select="TotalSize"/></xsl:call-template></td>
          <th>Free space</th><td><xsl:call-template name="bytes"><xsl:with-param name="n" select="FreeSpace"/></xsl:call-template></td>
        </tr>
        <tr>
          <th>Folders</th><td><xsl:value-of select="CountOfDirs"/></td>
          <th>Files</th><td><xsl:value-of select="CountOfFiles"/></td>
          <th>Media type</th><td><xsl:call-template name="media"><xsl:with-param name="code" select="MediaType"/></xsl:call-template></td>
        </tr>
      </table>
      <xsl:if test="string(Notes) != ''">
        <p class="notes"><xsl:value-of select="Notes"/></p>
      </xsl:if>
      <xsl:if test="not(Directory)">
        <p class="summary">No folders.</p>
      </xsl:if>
      <xsl:apply-templates select="Directory"/>
    </div>
  </xsl:template>

  <xsl:template match="Directory">
    <div class="folder">
      <h3>
        <xsl:value-of select="FullName"/>
        <span class="counts">
          &#160;&#8212; <xsl:value-of select="CountOfFilesDirect"/> file(s) here,
          <xsl:value-of select="CountOfFiles"/> in all,
          <xsl:value-of select="CountOfDirs"/> folder(s) below,
          <xsl:call-template name="bytes"><xsl:with-param name="n" select="Size"/></xsl:call-template>
          <xsl:if test="string(Date) != ''">, <xsl:value-of select="Date"/></xsl:if>
        </span>
      </h3>
      <xsl:if test="string(Notes) != ''">
        <p class="notes"><xsl:value-of select="Notes"/></p>
      </xsl:if>
      <xsl:if test="File">
        <table class="files">
          <tr><th>Name</th><th class="size">Size</th><th>Date</th><th>Notes</th></tr>
          <xsl:apply-templates select="File"/>
        </table>
      </xsl:if>
    </div>
  </xsl:template>

  <xsl:template match="File">
    <tr>
      <td><xsl:value-of select="Name"/></td>
      <td class="size"><xsl:call-template name="bytes"><xsl:with-param name="n" select="Size"/></xsl:call-template></td>
      <td><xsl:value-of select="Date"/></td>
      <td class="notes"><xsl:value-of select="Notes"/></td>
    </tr>
  </xsl:template>

  <!-- A byte count as people read it: bytes, KB, MB, GB or TB (units of 1024). -->
  <xsl:template name="bytes">
    <xsl:param name="n"/>
    <xsl:choose>
      <xsl:when test="string($n) = ''"></xsl:when>
      <xsl:when test="string(number($n)) = 'NaN'"><xsl:value-of select="$n"/></xsl:when>
      <xsl:when test="number($n) &lt; 1024"><xsl:value-of select="$n"/> bytes</xsl:when>
      <xsl:when test="number($n) &lt; 1048576"><xsl:value-of select="format-number(number($n) div 1024, '0.0')"/> KB</xsl:when>
      <xsl:when test="number($n) &lt; 1073741824"><xsl:value-of select="format-number(number($n) div 1048576, '0.0')"/> MB</xsl:when>
      <xsl:when test="number($n) &lt; 1099511627776"><xsl:value-of select="format-number(number($n) div 1073741824, '0.00')"/> GB</xsl:when>
      <xsl:otherwise><xsl:value-of select="format-number(number($n) div 1099511627776, '0.00')"/> TB</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="media">
    <xsl:param name="code"/>
    <xsl:choose>
      <xsl:when test="$code = 2">Removable</xsl:when>
      <xsl:when test="$code = 3">Fixed disk</xsl:when>
      <xsl:when test="$code = 4">Network</xsl:when>
      <xsl:when test="$code = 5">CD/DVD</xsl:when>
      <xsl:when test="$code = 6">RAM disk</xsl:when>
      <xsl:when test="$code = 105">Audio CD</xsl:when>
      <xsl:otherwise><xsl:value-of select="$code"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>
</xsl:stylesheet>
